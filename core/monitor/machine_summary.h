#pragma once

#include <QString>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace tarvik {

// The short description of the machine that Smart Scan opens with and `tarvik status` prints.
// Each figure may be missing on its own.
struct MachineSummary {
    QString hostName;
    QString systemName; // PRETTY_NAME of os-release
    QString kernel;
    std::optional<double> uptimeSeconds;
    std::optional<std::uint64_t> memoryTotal;
    std::optional<std::uint64_t> memoryAvailable;
    std::optional<std::uint64_t> swapTotal;
    std::optional<std::uint64_t> swapFree;
    QString homePath;
    std::optional<std::uint64_t> homeDiskTotal;
    std::optional<std::uint64_t> homeDiskFree; // free to this user (f_bavail)

    std::optional<std::uint64_t> memoryUsed() const;
    std::optional<double> memoryUsedFraction() const;
};

struct MachineSummaryOptions {
    std::filesystem::path root = "/";
    QString homePath; // the file system measured for free space
};

MachineSummary readMachineSummary(const MachineSummaryOptions& options);

// Pure parsers, tested on captured files.
std::optional<double> parseUptime(std::string_view text);
QString parseOsReleaseName(std::string_view text);

} // namespace tarvik

#include "core/monitor/summary_row.h"

#include <QJsonObject>
#include <utility>
#include <vector>

namespace tarvik {

// The summary as labelled lines in the user's words; a figure that is missing says so.
std::vector<SummaryRow> describe(const MachineSummary& summary);
// The same figures for scripts: raw numbers (bytes, seconds), null when missing.
QJsonObject toJson(const MachineSummary& summary);

} // namespace tarvik
