#pragma once

#include <QString>

namespace tarvik {

// Shows a desktop notification through org.freedesktop.Notifications on the session bus;
// false when no notification service answers.
bool notifyDesktop(const QString& summary, const QString& body);

} // namespace tarvik
