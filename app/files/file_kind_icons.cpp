#include "app/files/file_kind_icons.h"

#include "app/shell/section_icons.h"

#include <QStringList>

namespace tarvik {
namespace {

// The freedesktop generic icons, tried in order: file managers show these same ones, so a
// row looks like the file does elsewhere on the desktop.
QStringList themeNames(FileKind kind) {
    switch (kind) {
    case FileKind::Archive:
        return {"package-x-generic", "application-x-archive"};
    case FileKind::DiskImage:
        return {"media-optical", "application-x-cd-image", "drive-optical"};
    case FileKind::Video:
        return {"video-x-generic"};
    case FileKind::Audio:
        return {"audio-x-generic"};
    case FileKind::Image:
        return {"image-x-generic"};
    case FileKind::Document:
        return {"x-office-document", "text-x-generic"};
    case FileKind::VirtualMachine:
        return {"computer", "network-server"};
    case FileKind::Other:
        return {"text-x-generic", "application-x-generic", "unknown"};
    }
    return {};
}

} // namespace

QIcon fileKindIcon(FileKind kind) {
    for (const QString& name : themeNames(kind)) {
        if (QIcon::hasThemeIcon(name)) {
            return QIcon::fromTheme(name);
        }
    }
    return symbolIcon(symbol(kind).toStdString(), title(kind));
}

} // namespace tarvik
