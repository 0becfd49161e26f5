#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <string_view>

namespace tarvik {

enum class AppPermission { FullDiskAccess, Accessibility, Microphone, Notifications };
enum class PermissionStatus { Granted, NotGranted, NotDetermined };

inline constexpr std::array<AppPermission, 4> kAllPermissions{
    AppPermission::FullDiskAccess, AppPermission::Accessibility, AppPermission::Microphone,
    AppPermission::Notifications};

std::string_view rawKey(AppPermission permission);
QString title(AppPermission permission);
QString statusText(PermissionStatus status);

struct PermissionStatuses {
    std::array<PermissionStatus, 4> status{};
    PermissionStatus operator[](AppPermission p) const { return status[static_cast<int>(p)]; }
};

} // namespace tarvik
