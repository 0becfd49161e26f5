#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace tarvik {

// A note in the window's quieter text colour, wrapped: what a screen says about its figures,
// and what stands where figures would be when there are none.
QLabel* quietLabel(const QString& text, QWidget* parent);

} // namespace tarvik
