#include "core/cleanup/hard_link_note.h"

#include "core/sys/file_names.h"

namespace tarvik {

std::optional<QString> hardLinkNote(const QStringList& namesSeen, std::uint32_t links) {
    if (!namesSeen.isEmpty()) {
        return QStringLiteral(
                   "Also named %1 (hard links to the same file); removing one name frees nothing.")
            .arg(fileName::display(namesSeen.join(QStringLiteral(", "))));
    }
    if (links > 1) {
        return QStringLiteral("This file has %1 other name(s) (hard links) outside the search; "
                              "removing this name frees nothing.")
            .arg(links - 1);
    }
    return std::nullopt;
}

} // namespace tarvik
