#pragma once

#include <QMap>
#include <QString>

namespace tarvik::BrewAskpass {

// The helper sudo runs (through SUDO_ASKPASS) when brew needs a password: it asks with the
// first password dialog the desktop has, prints the answer, and prints nothing when declined.
QString script();
// Writes the script into `supportDirectory` (only when it differs), mode 700, and returns
// SUDO_ASKPASS pointing at it. Never fails: an unwritable script only makes sudo fail.
QMap<QString, QString> environment(const QString& supportDirectory);
// <Application Support>/Homebrew
QString defaultSupportDirectory();

} // namespace tarvik::BrewAskpass
