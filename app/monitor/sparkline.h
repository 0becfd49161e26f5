#pragma once

#include <QWidget>
#include <deque>

namespace tarvik {

// A short history drawn as a filled line. Values are fractions 0…1, or any non-negative
// figure when `setAutoScale(true)` (rates), scaled to the largest value shown.
class Sparkline : public QWidget {
    Q_OBJECT
public:
    explicit Sparkline(QWidget* parent = nullptr);

    void setValues(const std::deque<double>& values);
    void setAutoScale(bool on) { autoScale_ = on; }
    void setColor(const QColor& color) { color_ = color; }
    QSize sizeHint() const override { return {160, 36}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::deque<double> values_;
    bool autoScale_ = false;
    QColor color_;
};

// A fixed-length history of one figure; the oldest value leaves when a new one arrives.
class History {
public:
    explicit History(std::size_t capacity = 90) : capacity_(capacity) {}
    void add(double value) {
        values_.push_back(value);
        if (values_.size() > capacity_) {
            values_.pop_front();
        }
    }
    const std::deque<double>& values() const { return values_; }

private:
    std::size_t capacity_;
    std::deque<double> values_;
};

} // namespace tarvik
