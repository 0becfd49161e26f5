#include "app/shell/stat_card.h"

#include "app/shell/meter_bar.h"
#include "app/shell/theme.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tarvik {

StatCard::StatCard(std::string_view symbol, const QString& heading, QWidget* parent)
    : Card(heading, parent, symbol) {
    value_ = new QLabel(QStringLiteral("—"), this);
    value_->setObjectName(QStringLiteral("statValue"));
    setTextStyle(value_, TextStyle::Headline);
    value_->setAccessibleName(heading);
    value_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    detail_ = new QLabel(this);
    detail_->setObjectName(QStringLiteral("statDetail"));
    detail_->setWordWrap(true);
    setTextStyle(detail_, TextStyle::Secondary);
    meter_ = new MeterBar(this);
    meter_->hide();
    body()->addWidget(value_);
    body()->addWidget(meter_);
    body()->addWidget(detail_);
}

void StatCard::setValue(const QString& headline, const QString& detail) {
    value_->setText(headline);
    detail_->setText(detail);
    detail_->setVisible(!detail.isEmpty());
}

void StatCard::setFraction(std::optional<double> fraction) {
    meter_->setFraction(fraction);
    meter_->setVisible(fraction.has_value());
}

QPushButton* StatCard::addButton(const QString& label) {
    auto* button = new QPushButton(label, this);
    body()->addStretch(1);
    body()->addWidget(button, 0, Qt::AlignLeft);
    return button;
}

} // namespace tarvik
