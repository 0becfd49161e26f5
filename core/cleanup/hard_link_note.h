#pragma once

#include <QStringList>
#include <cstdint>
#include <optional>

namespace tarvik {

// The note on a file that has other names (hard links), for which removing one name frees
// nothing: the names the search saw, or how many lie outside it. None for a file of one name.
std::optional<QString> hardLinkNote(const QStringList& namesSeen, std::uint32_t links);

} // namespace tarvik
