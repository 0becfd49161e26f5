#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <vector>

namespace tarvik {

// One time-stamped value of a history.
struct MonitorPoint {
    std::chrono::system_clock::time_point date;
    double value = 0;
};

// A bounded ring of recent values: the oldest leaves when a new one arrives past `capacity`.
class MetricHistory {
public:
    explicit MetricHistory(std::size_t capacity) : capacity_(capacity == 0 ? 1 : capacity) {}

    void add(MonitorPoint point) {
        points_.push_back(point);
        if (points_.size() > capacity_) {
            points_.pop_front();
        }
    }
    void clear() { points_.clear(); }

    std::size_t capacity() const { return capacity_; }
    const std::deque<MonitorPoint>& points() const { return points_; }
    // The values alone, oldest first.
    std::vector<double> values() const {
        std::vector<double> out;
        out.reserve(points_.size());
        for (const auto& p : points_) {
            out.push_back(p.value);
        }
        return out;
    }

private:
    std::size_t capacity_;
    std::deque<MonitorPoint> points_;
};

} // namespace tarvik
