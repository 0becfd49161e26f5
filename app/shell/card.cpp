#include "app/shell/card.h"

#include "app/shell/symbol_label.h"
#include "app/shell/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace tarvik {

Card::Card(QWidget* parent) : Card(QString(), parent) {}

Card::Card(const QString& heading, QWidget* parent, std::string_view symbol) : QFrame(parent) {
    setObjectName(QStringLiteral("card"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::l, space::m, space::l, space::l);
    layout->setSpacing(space::s);
    if (!heading.isEmpty()) {
        header_ = new QHBoxLayout();
        header_->setSpacing(space::s);
        if (!symbol.empty()) {
            header_->addWidget(new SymbolLabel(symbol, 18, false, this));
        }
        heading_ = new QLabel(heading, this);
        setTextStyle(heading_, TextStyle::Heading);
        header_->addWidget(heading_, 1);
        layout->addLayout(header_);
        setAccessibleName(heading);
    }
    body_ = new QVBoxLayout();
    body_->setSpacing(space::s);
    layout->addLayout(body_, 1);
}

void Card::addHeaderWidget(QWidget* widget) {
    if (header_ != nullptr) {
        header_->addWidget(widget, 0, Qt::AlignVCenter);
    }
}

void Card::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette& pal = palette();
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(QPen(pal.color(QPalette::Mid), 1.0));
    p.setBrush(pal.color(QPalette::Base));
    p.drawRoundedRect(box, 10, 10);
}

} // namespace tarvik
