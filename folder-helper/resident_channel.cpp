#include "folder-helper/resident_channel.h"

#include <unistd.h>

namespace tarvik::ResidentChannel {

QString name(const QUuid& folder) {
    return QStringLiteral("org.pellor.tarvik.folder-%1-%2")
        .arg(folder.toString(QUuid::WithoutBraces))
        .arg(::getuid());
}

} // namespace tarvik::ResidentChannel
