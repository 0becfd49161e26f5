#include "app/shell/sidebar_model.h"

#include "app/shell/section_icons.h"
#include "core/text/counts.h"
#include "core/text/qt_text.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

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
    if (row.heading) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return toQString(rawValue(*row.heading));
        case Qt::FontRole: {
            QFont f;
            f.setBold(true);
            f.setPointSizeF(f.pointSizeF() * 0.85);
            return f;
        }
        case Qt::ForegroundRole:
            // Headings cannot be selected, but they are labels, not disabled rows.
            return QGuiApplication::palette().brush(QPalette::PlaceholderText);
        case IsHeadingRole:
            return true;
        default:
            return {};
        }
    }
    const SectionInfo& s = info(*row.section);
    const auto badge = badges_.find(s.section);
    const int count = badge == badges_.end() ? 0 : badge->second;
    switch (role) {
    case Qt::DisplayRole:
        return count > 0 ? QStringLiteral("%1  (%2)").arg(toQString(s.title)).arg(count)
                         : toQString(s.title);
    case Qt::AccessibleTextRole:
        return count > 0 ? QStringLiteral("%1, %2").arg(toQString(s.title),
                                                        countOf(count, u"update", u"updates"))
                         : toQString(s.title);
    case Qt::DecorationRole:
        return sectionIcon(s.section);
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
    if (rows_[static_cast<std::size_t>(index.row())].heading) {
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
    emit dataChanged(i, i, {Qt::DisplayRole, Qt::AccessibleTextRole});
}

std::optional<AppSection> SidebarModel::sectionAt(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return std::nullopt;
    }
    return rows_[static_cast<std::size_t>(index.row())].section;
}

} // namespace tarvik
