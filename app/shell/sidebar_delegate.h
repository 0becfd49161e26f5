#pragma once

#include <QStyledItemDelegate>

namespace tarvik {

// Draws the sidebar's rows: group headings in small muted capitals, a thin divider, and sections
// as a symbol and title on a rounded highlight when selected, with a count pill at the right
// and dimmed when the section is not built yet.
class SidebarDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace tarvik
