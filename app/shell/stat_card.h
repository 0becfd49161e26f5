#pragma once

#include "app/shell/card.h"

#include <optional>

class QLabel;
class QPushButton;

namespace tarvik {

class MeterBar;

// A card around one headline figure: its name with a symbol, the figure large with its unit,
// a line of detail under it, and a meter when the figure is a share of something.
class StatCard : public Card {
    Q_OBJECT
public:
    StatCard(std::string_view symbol, const QString& heading, QWidget* parent = nullptr);

    void setValue(const QString& headline, const QString& detail = {});
    // Shows the meter with how full it is; empty hides it.
    void setFraction(std::optional<double> fraction);
    // A button under the figures, leading to what fills or explains them.
    QPushButton* addButton(const QString& label);

    QLabel* valueLabel() const { return value_; }
    QLabel* detailLabel() const { return detail_; }
    MeterBar* meter() const { return meter_; }

private:
    QLabel* value_ = nullptr;
    QLabel* detail_ = nullptr;
    MeterBar* meter_ = nullptr;
};

} // namespace tarvik
