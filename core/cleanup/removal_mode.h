#pragma once

#include <QString>
#include <array>
#include <optional>
#include <string_view>

namespace tarvik {

enum class RemovalMode { MoveToTrash, DeletePermanently };

inline constexpr std::array<RemovalMode, 2> kAllRemovalModes{RemovalMode::MoveToTrash,
                                                             RemovalMode::DeletePermanently};

std::string_view rawValue(RemovalMode mode);
QString title(RemovalMode mode);
std::optional<RemovalMode> removalModeFromRaw(std::string_view raw);

} // namespace tarvik
