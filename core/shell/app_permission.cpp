#include "core/shell/app_permission.h"

namespace tarvik {

std::string_view rawKey(AppPermission permission) {
    switch (permission) {
    case AppPermission::FullDiskAccess:
        return "fullDiskAccess";
    case AppPermission::Accessibility:
        return "accessibility";
    case AppPermission::Microphone:
        return "microphone";
    case AppPermission::Notifications:
        return "notifications";
    }
    return {};
}

QString title(AppPermission permission) {
    switch (permission) {
    case AppPermission::FullDiskAccess:
        return QStringLiteral("Full Disk Access");
    case AppPermission::Accessibility:
        return QStringLiteral("Input Control");
    case AppPermission::Microphone:
        return QStringLiteral("Microphone");
    case AppPermission::Notifications:
        return QStringLiteral("Notifications");
    }
    return {};
}

QString statusText(PermissionStatus status) {
    switch (status) {
    case PermissionStatus::Granted:
        return QStringLiteral("Allowed");
    case PermissionStatus::NotGranted:
        return QStringLiteral("Not allowed");
    case PermissionStatus::NotDetermined:
        return QStringLiteral("Unknown");
    }
    return {};
}

} // namespace tarvik
