#pragma once

#include <QWidget>
#include <optional>

namespace tarvik {

// One plan limit: the share used as a filled bar (past the end when over the limit), and a
// tick where an even pace through the period would be.
class LimitBar : public QWidget {
    Q_OBJECT
public:
    explicit LimitBar(QWidget* parent = nullptr);
    void setValues(double used, std::optional<double> evenPace);
    double used() const { return used_; }
    std::optional<double> evenPace() const { return pace_; }
    QSize sizeHint() const override { return {240, 12}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double used_ = 0;
    std::optional<double> pace_;
};

} // namespace tarvik
