#pragma once

#include "core/shell/app_section.h"

#include <QAbstractListModel>
#include <optional>
#include <vector>

namespace tarvik {

// The sidebar's rows: Smart Scan, then each group that has sections as a heading followed by
// its sections, then Settings. Headings cannot be selected.
class SidebarModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { SectionRole = Qt::UserRole + 1, IsHeadingRole, RawKeyRole };

    explicit SidebarModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QModelIndex indexOf(AppSection section) const;
    std::optional<AppSection> sectionAt(const QModelIndex& index) const;

private:
    struct Row {
        std::optional<AppSection> section;
        std::optional<SectionGroup> heading;
    };
    std::vector<Row> rows_;
};

} // namespace tarvik
