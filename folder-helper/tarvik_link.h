#pragma once

#include <QString>

namespace tarvik {

// Hands a tarvik:// link to Tarvik: the program at `tarvik` (the one installed beside the
// helper) as its only argument, or, when that program is missing, to whatever the desktop
// opens such links with. False when neither took it.
bool sendToTarvik(const QString& tarvik, const QString& link);

// The tarvik program beside the running helper.
QString tarvikBesideHelper();

} // namespace tarvik
