#include "app/shell/panel_figure.h"

#include "app/monitor/sparkline.h"
#include "app/shell/symbol_label.h"
#include "app/shell/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace tarvik {

PanelFigure::PanelFigure(const QString& caption, std::optional<MenuBarStat> glyph, QWidget* parent)
    : QWidget(parent) {
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(2);
    auto* head = new QHBoxLayout();
    head->setSpacing(4);
    auto* title = new QLabel(caption, this);
    setTextStyle(title, TextStyle::Secondary);
    if (glyph) {
        head->addWidget(new SymbolLabel(symbol(*glyph), 14, true, this));
    }
    head->addWidget(title, 1);
    v->addLayout(head);

    value_ = new QLabel(QStringLiteral("—"), this);
    value_->setAccessibleName(caption);
    value_->setTextFormat(Qt::PlainText);
    setTextStyle(value_, TextStyle::Headline);
    v->addWidget(value_);
    detail_ = new QLabel(this);
    detail_->setTextFormat(Qt::PlainText);
    detail_->setWordWrap(true);
    detail_->setAccessibleName(caption + tr(" detail"));
    v->addWidget(detail_);
    chart_ = new Sparkline(this);
    chart_->setMinimumHeight(24);
    chart_->setAccessibleName(caption + tr(" history"));
    chart_->hide();
    v->addWidget(chart_);
}

void PanelFigure::setFigure(const QString& value, const QString& detail, ReadingLevel level) {
    value_->setText(value);
    value_->show();
    detail_->setText(detail);
    // Only the one role is set, so the rest still follows the desktop's palette.
    QPalette p;
    if (level == ReadingLevel::Watch || level == ReadingLevel::Critical) {
        p.setColor(QPalette::WindowText, meaningColor(level));
    }
    value_->setPalette(p);
}

void PanelFigure::setHistory(std::vector<double> values, bool rates) {
    chart_->show();
    chart_->setAutoScale(rates);
    chart_->setValues(std::move(values));
}

void PanelFigure::setAbsent(const QString& sentence) {
    value_->hide();
    chart_->hide();
    detail_->setText(sentence);
}

QString PanelFigure::value() const {
    return value_->isHidden() ? QString() : value_->text();
}

QString PanelFigure::detail() const {
    return detail_->text();
}

} // namespace tarvik
