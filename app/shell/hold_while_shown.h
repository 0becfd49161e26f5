#pragma once

#include <functional>

class QWidget;

namespace tarvik {

// Keeps something held (a model's sampling, its refreshing) exactly while `widget` is on
// screen: `acquire` runs when it is shown, `release` when it is hidden or goes away while shown.
// `release` may run while the widget is being destroyed: it must not touch the widget.
void holdWhileShown(QWidget* widget, std::function<void()> acquire, std::function<void()> release);

} // namespace tarvik
