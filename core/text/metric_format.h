#pragma once

#include <QString>
#include <cstdint>

namespace tarvik::MetricFormat {

// A byte count in decimal units as file managers show it: "512 bytes", "1.5 KB", "12.3 GB".
QString bytes(std::int64_t count);
// A bytes-per-second figure: "0 KB/s" below one byte per second, else bytes() + "/s".
QString rate(double bytesPerSecond);
// Whole minutes: "45 minutes"; under a day "3 hours, 12 minutes"; beyond "4 days, 2 hours".
QString duration(double seconds);
// A fraction 0…1 as a whole percentage: "42%".
QString percent(double fraction);

} // namespace tarvik::MetricFormat
