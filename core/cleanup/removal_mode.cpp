#include "core/cleanup/removal_mode.h"

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

} // namespace tarvik
