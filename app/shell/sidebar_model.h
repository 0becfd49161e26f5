#pragma once

#include "core/shell/app_section.h"

#include <QAbstractListModel>
#include <map>
#include <optional>
#include <vector>

namespace tarvik {

// The sidebar's rows: Smart Scan, then each group that has sections as a heading followed by
// its sections, then a divider and Settings, outside the groups. Headings and the divider cannot
// be selected. Sections this version does not have yet are dimmed and say so.
class SidebarModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role {
        SectionRole = Qt::UserRole + 1,
        IsHeadingRole,
        IsDividerRole,
        RawKeyRole,
        BadgeRole,
        IsAvailableRole
    };

    explicit SidebarModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QModelIndex indexOf(AppSection section) const;
    std::optional<AppSection> sectionAt(const QModelIndex& index) const;
    // A count shown beside a section (Homebrew's updates); 0 shows none.
    void setBadge(AppSection section, int count);

private:
    struct Row {
        std::optional<AppSection> section;
        std::optional<SectionGroup> heading;
        bool divider = false;
    };
    std::vector<Row> rows_;
    std::map<AppSection, int> badges_;
};

} // namespace tarvik
