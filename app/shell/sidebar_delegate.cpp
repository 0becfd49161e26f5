#include "app/shell/sidebar_delegate.h"

#include "app/shell/sidebar_model.h"
#include "app/shell/theme.h"

#include <QApplication>
#include <QPainter>

namespace tarvik {
namespace {

constexpr int kRowHeight = 28;
constexpr int kHeadingHeight = 26;
constexpr int kDividerHeight = 11;
constexpr int kIconSize = 18;

} // namespace

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    const int width = option.rect.width() > 0 ? option.rect.width() : 180;
    if (index.data(SidebarModel::IsDividerRole).toBool()) {
        return {width, kDividerHeight};
    }
    if (index.data(SidebarModel::IsHeadingRole).toBool()) {
        return {width, std::max(kHeadingHeight, option.fontMetrics.height() + space::s)};
    }
    return {width, std::max(kRowHeight, option.fontMetrics.height() + space::s)};
}

void SidebarDelegate::paint(QPainter* p, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const QPalette& pal = option.palette;
    const QRect r = option.rect.adjusted(space::s, 0, -space::s, 0);
    p->save();
    p->setRenderHint(QPainter::Antialiasing);
    if (index.data(SidebarModel::IsDividerRole).toBool()) {
        p->setPen(QPen(pal.color(QPalette::Mid), 1));
        const double y = r.center().y() + 0.5;
        p->drawLine(QPointF(r.left() + space::s, y), QPointF(r.right() - space::s, y));
        p->restore();
        return;
    }
    if (index.data(SidebarModel::IsHeadingRole).toBool()) {
        QFont f = font(TextStyle::Secondary, option.font);
        f.setCapitalization(QFont::AllUppercase);
        f.setLetterSpacing(QFont::PercentageSpacing, 106);
        f.setWeight(QFont::DemiBold);
        p->setFont(f);
        p->setPen(pal.color(QPalette::PlaceholderText));
        p->drawText(r.adjusted(space::s, 0, 0, -space::xs), Qt::AlignLeft | Qt::AlignBottom,
                    index.data().toString());
        p->restore();
        return;
    }

    const bool selected = option.state & QStyle::State_Selected;
    const bool available = index.data(SidebarModel::IsAvailableRole).toBool();
    const bool active = option.state & QStyle::State_Active;
    const QRectF pill = QRectF(r).adjusted(0, 1.5, 0, -1.5);
    if (selected) {
        p->setPen(Qt::NoPen);
        p->setBrush(pal.color(active ? QPalette::Active : QPalette::Inactive, QPalette::Highlight));
        p->drawRoundedRect(pill, 7, 7);
    } else if (option.state & QStyle::State_MouseOver) {
        p->setPen(Qt::NoPen);
        p->setBrush(pal.color(QPalette::Midlight));
        p->drawRoundedRect(pill, 7, 7);
    }
    // Keyboard focus shows as a ring, on the selected row too.
    if (option.state & QStyle::State_HasFocus) {
        QColor ring =
            selected ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::Highlight);
        if (selected) {
            ring.setAlpha(190);
        }
        p->setPen(QPen(ring, 1.5));
        p->setBrush(Qt::NoBrush);
        p->drawRoundedRect(pill.adjusted(1.5, 1.5, -1.5, -1.5), 6, 6);
    }

    const QColor ink = selected    ? pal.color(QPalette::HighlightedText)
                       : available ? pal.color(QPalette::WindowText)
                                   : pal.color(QPalette::PlaceholderText);
    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    const QRect iconBox(r.left() + space::s, r.center().y() - kIconSize / 2 + 1, kIconSize,
                        kIconSize);
    icon.paint(p, iconBox, Qt::AlignCenter,
               selected ? QIcon::Selected : (available ? QIcon::Normal : QIcon::Disabled));

    QRect text = r.adjusted(space::s + kIconSize + space::s + 2, 0, -space::s, 0);
    const int badge = index.data(SidebarModel::BadgeRole).toInt();
    if (badge > 0) {
        QFont f = font(TextStyle::Secondary, option.font);
        f.setWeight(QFont::DemiBold);
        const QString label = QString::number(badge);
        const QFontMetrics fm(f);
        const int w = std::max(fm.height() + 2, fm.horizontalAdvance(label) + space::m);
        const QRectF bubble(text.right() - w, r.center().y() - fm.height() / 2.0 - 1, w,
                            fm.height() + 2);
        p->setPen(Qt::NoPen);
        p->setBrush(selected ? pal.color(QPalette::HighlightedText)
                             : pal.color(QPalette::Highlight));
        p->drawRoundedRect(bubble, bubble.height() / 2, bubble.height() / 2);
        p->setFont(f);
        p->setPen(selected ? pal.color(QPalette::Highlight) : pal.color(QPalette::HighlightedText));
        p->drawText(bubble, Qt::AlignCenter, label);
        text.setRight(static_cast<int>(bubble.left()) - space::xs);
    }
    p->setFont(option.font);
    p->setPen(ink);
    p->drawText(
        text, Qt::AlignLeft | Qt::AlignVCenter,
        option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, text.width()));
    p->restore();
}

} // namespace tarvik
