#include "app/agents/spend_chart.h"

#include "app/shell/quiet_label.h"
#include "core/agents/spend/usage_format.h"

#include <QBarSeries>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QCursor>
#include <QLabel>
#include <QLocale>
#include <QToolTip>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>

namespace tarvik {
namespace {

// Axes in the window's own colours, so the chart reads on a dark theme as on a light one.
void colour(QAbstractAxis& axis, const QPalette& palette) {
    axis.setLabelsColor(palette.color(QPalette::WindowText));
    axis.setLinePenColor(palette.color(QPalette::Mid));
    axis.setGridLineColor(palette.color(QPalette::Midlight));
}

} // namespace

SpendChart::SpendChart(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* chart = new QChart();
    chart->legend()->hide();
    chart->setBackgroundVisible(false);
    chart->setMargins(QMargins(0, 4, 0, 0));
    view_ = new QChartView(chart, this);
    view_->setRenderHint(QPainter::Antialiasing);
    view_->setMinimumHeight(180);
    view_->setAccessibleName(tr("Spend per day"));
    empty_ = quietLabel(QString(), this);
    empty_->setObjectName(QStringLiteral("spendEmpty"));
    empty_->hide();
    layout->addWidget(view_);
    layout->addWidget(empty_);
}

void SpendChart::setDays(std::vector<DailySpend> days) {
    days_ = std::move(days);
    QChart* chart = view_->chart();
    chart->removeAllSeries();
    for (QAbstractAxis* axis : chart->axes()) {
        chart->removeAxis(axis);
        delete axis;
    }
    auto* bars = new QBarSet(tr("Spend"));
    bars->setColor(palette().color(QPalette::Highlight));
    bars->setPen(Qt::NoPen);
    double highest = 0;
    for (const DailySpend& d : days_) {
        bars->append(d.cost);
        highest = std::max(highest, d.cost);
    }
    connect(bars, &QBarSet::hovered, this, [this](bool over, int index) {
        if (over) {
            QToolTip::showText(QCursor::pos(), barText(index), view_);
        } else {
            QToolTip::hideText();
        }
    });
    auto* series = new QBarSeries();
    series->setBarWidth(0.7);
    series->append(bars);
    chart->addSeries(series);

    // A date under the last day and under every seventh before it: thirty dates side by side
    // would not fit.
    const int count = static_cast<int>(days_.size());
    auto* dates = new QCategoryAxis();
    dates->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    dates->setStartValue(-0.5);
    dates->setRange(-0.5, count - 0.5);
    const int step = count > 10 ? 7 : 1;
    for (int i = (count - 1) % step; i < count; i += step) {
        dates->append(
            QLocale().toString(days_[static_cast<std::size_t>(i)].day, QStringLiteral("d MMM")), i);
    }
    dates->setGridLineVisible(false);
    colour(*dates, palette());

    auto* dollars = new QValueAxis();
    dollars->setRange(0, highest > 0 ? highest : 1.0);
    dollars->applyNiceNumbers();
    dollars->setLabelFormat(dollars->max() >= 10 ? QStringLiteral("$%.0f")
                                                 : QStringLiteral("$%.2f"));
    colour(*dollars, palette());

    chart->addAxis(dates, Qt::AlignBottom);
    chart->addAxis(dollars, Qt::AlignLeft);
    series->attachAxis(dates);
    series->attachAxis(dollars);
    empty_->hide();
    view_->show();
}

void SpendChart::showEmpty(const QString& sentence) {
    empty_->setText(sentence);
    view_->hide();
    empty_->show();
}

QString SpendChart::barText(int index) const {
    if (index < 0 || index >= static_cast<int>(days_.size())) {
        return {};
    }
    const DailySpend& d = days_[static_cast<std::size_t>(index)];
    return tr("%1: %2 · %3 tokens")
        .arg(QLocale().toString(d.day, QStringLiteral("ddd d MMM")), UsageFormat::dollars(d.cost),
             UsageFormat::tokens(d.tokens));
}

} // namespace tarvik
