#pragma once

#include "core/monitor/summary_row.h"
#include "core/monitor/system_reading.h"

#include <QJsonObject>
#include <vector>

namespace tarvik {

struct SessionTotals;

// A reading in words, one labelled line per part; a part the machine did not give says so.
std::vector<SummaryRow> describeReading(const SystemReading& reading, const CPUTopology& topology);
// What is said where a figure would be, for a machine without a battery or a GPU's load.
QString noBatterySentence();
QString noGpuLoadSentence(bool gpuAsleep);
// The same for scripts: fractions 0…1, bytes, bytes per second, seconds; null when missing.
QJsonObject toJson(const SystemReading& reading, const CPUTopology& topology);

} // namespace tarvik
