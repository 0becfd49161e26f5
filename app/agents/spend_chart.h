#pragma once

#include "core/agents/spend/usage_summary.h"

#include <QWidget>
#include <vector>

class QChartView;
class QLabel;

namespace tarvik {

// A period's spend as a bar a day, oldest on the left, over a date axis and a dollar axis, with
// the day's figures in a tooltip over its bar; a period without usage shows a sentence instead.
class SpendChart : public QWidget {
    Q_OBJECT
public:
    explicit SpendChart(QWidget* parent = nullptr);

    void setDays(std::vector<DailySpend> days);
    void showEmpty(const QString& sentence);

    // What a bar's tooltip says: "Mon 3 Mar: $1.02 · 201K tokens".
    QString barText(int index) const;
    QChartView* view() const { return view_; }

private:
    QChartView* view_ = nullptr;
    QLabel* empty_ = nullptr;
    std::vector<DailySpend> days_;
};

} // namespace tarvik
