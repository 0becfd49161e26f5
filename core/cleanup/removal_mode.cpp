#include "core/cleanup/removal_mode.h"

#include "core/settings/preferences.h"

namespace tarvik {

std::string_view rawValue(RemovalMode mode) {
    return mode == RemovalMode::MoveToTrash ? "moveToTrash" : "deletePermanently";
}

QString title(RemovalMode mode) {
    return mode == RemovalMode::MoveToTrash ? QStringLiteral("Move to Trash")
                                            : QStringLiteral("Delete permanently");
}

std::optional<RemovalMode> removalModeFromRaw(std::string_view raw) {
    for (auto mode : kAllRemovalModes) {
        if (rawValue(mode) == raw) {
            return mode;
        }
    }
    return std::nullopt;
}

RemovalMode removalModePreference(const Preferences& preferences, std::string_view key) {
    const QByteArray raw = preferences.value(key).toString().toUtf8();
    const auto fallback =
        key == pref::kJunkRemovalMode ? RemovalMode::DeletePermanently : RemovalMode::MoveToTrash;
    return removalModeFromRaw(
               std::string_view(raw.constData(), static_cast<std::size_t>(raw.size())))
        .value_or(fallback);
}

} // namespace tarvik
