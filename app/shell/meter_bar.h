#pragma once

#include <QWidget>
#include <optional>

namespace tarvik {

// A thin rounded bar for how full something is, in the colour of what that fullness means
// (good, watch, critical); empty when there is no figure.
class MeterBar : public QWidget {
    Q_OBJECT
public:
    explicit MeterBar(QWidget* parent = nullptr);
    void setFraction(std::optional<double> fraction);
    std::optional<double> fraction() const { return fraction_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::optional<double> fraction_;
};

} // namespace tarvik
