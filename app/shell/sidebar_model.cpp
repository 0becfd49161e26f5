#include "app/shell/sidebar_model.h"

#include "app/shell/section_icons.h"
#include "app/shell/unavailable_screen.h"
#include "core/text/counts.h"
#include "core/text/qt_text.h"

namespace tarvik {
SidebarModel::SidebarModel(QObject* parent) : QAbstractListModel(parent) {
    for (const auto& s : allSections()) {
        if (!s.group && s.section != AppSection::Settings) {
            rows_.push_back({s.section, std::nullopt});
        }
    }
    for (SectionGroup g : allGroups()) {
        const auto members = sections(g);
        if (members.empty()) {
            continue; // a group without sections has no heading
        }
        rows_.push_back({std::nullopt, g});
        for (AppSection s : members) {
            rows_.push_back({s, std::nullopt});
        }
    }
    rows_.push_back({std::nullopt, std::nullopt, true});
    rows_.push_back({AppSection::Settings, std::nullopt});
}

int SidebarModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    if (row.divider) {
        return role == IsDividerRole ? QVariant(true) : QVariant();
    }
    if (row.heading) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return toQString(rawValue(*row.heading));
        case IsHeadingRole:
            return true;
        default:
            return {};
        }
    }
    const SectionInfo& s = info(*row.section);
    const auto badge = badges_.find(s.section);
    const int count = badge == badges_.end() ? 0 : badge->second;
    const bool available = hasScreen(s.section);
    switch (role) {
    case Qt::DisplayRole:
        return toQString(s.title);
    case Qt::AccessibleTextRole:
        if (!available) {
            return QStringLiteral("%1, %2").arg(toQString(s.title), comingLater());
        }
        return count > 0 ? QStringLiteral("%1, %2").arg(toQString(s.title),
                                                        countOf(count, u"update", u"updates"))
                         : toQString(s.title);
    case Qt::ToolTipRole:
        return available ? QVariant() : QVariant(comingLater());
    case Qt::DecorationRole:
        return sectionIcon(s.section);
    case BadgeRole:
        return count;
    case IsAvailableRole:
        return available;
    case IsDividerRole:
        return false;
    case SectionRole:
        return static_cast<int>(s.section);
    case RawKeyRole:
        return toQString(s.rawKey);
    case IsHeadingRole:
        return false;
    default:
        return {};
    }
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    if (row.heading || row.divider) {
        return Qt::NoItemFlags;
    }
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

QModelIndex SidebarModel::indexOf(AppSection section) const {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].section == section) {
            return index(static_cast<int>(i));
        }
    }
    return {};
}

void SidebarModel::setBadge(AppSection section, int count) {
    badges_[section] = count;
    const QModelIndex i = indexOf(section);
    emit dataChanged(i, i, {BadgeRole, Qt::AccessibleTextRole});
}

std::optional<AppSection> SidebarModel::sectionAt(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return std::nullopt;
    }
    return rows_[static_cast<std::size_t>(index.row())].section;
}

} // namespace tarvik
