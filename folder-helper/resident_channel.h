#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>

namespace tarvik {

// A resident helper (tarvik-folder --background) listens on a local socket named after its
// folder and the user; a launch of the same folder asks it to show its popup and exits at once.
namespace ResidentChannel {

inline const QByteArray kShow = QByteArrayLiteral("show");
// Only asks whether one is there: a second resident helper for the folder then steps back.
inline const QByteArray kPing = QByteArrayLiteral("ping");

QString name(const QUuid& folder);

} // namespace ResidentChannel
} // namespace tarvik
