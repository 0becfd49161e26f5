#pragma once

#include <QWidget>
#include <vector>

namespace tarvik {

// A short history drawn as a filled line. Values are fractions 0…1, or any non-negative
// figure when `setAutoScale(true)` (rates), scaled to the largest value shown.
class Sparkline : public QWidget {
    Q_OBJECT
public:
    explicit Sparkline(QWidget* parent = nullptr);

    void setValues(std::vector<double> values);
    void setAutoScale(bool on) { autoScale_ = on; }
    void setColor(const QColor& color) { color_ = color; }
    QSize sizeHint() const override { return {160, 36}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<double> values_;
    bool autoScale_ = false;
    QColor color_;
};

} // namespace tarvik
