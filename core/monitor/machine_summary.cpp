#include "core/monitor/machine_summary.h"

#include "core/monitor/disk.h"
#include "core/monitor/meminfo.h"
#include "core/sys/system_files.h"
#include "core/text/qt_text.h"

#include <charconv>
#include <unistd.h>

namespace tarvik {
namespace {

QString firstLine(const std::optional<std::string>& text) {
    if (!text) {
        return {};
    }
    return QString::fromStdString(text->substr(0, text->find('\n'))).trimmed();
}

} // namespace

std::optional<std::uint64_t> MachineSummary::memoryUsed() const {
    if (!memoryTotal || !memoryAvailable || *memoryAvailable > *memoryTotal) {
        return std::nullopt;
    }
    return *memoryTotal - *memoryAvailable;
}

std::optional<double> MachineSummary::memoryUsedFraction() const {
    const auto used = memoryUsed();
    if (!used || *memoryTotal == 0) {
        return std::nullopt;
    }
    return static_cast<double>(*used) / static_cast<double>(*memoryTotal);
}

std::optional<double> parseUptime(std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || value < 0) {
        return std::nullopt;
    }
    return value;
}

QString parseOsReleaseName(std::string_view text) {
    QString name;
    while (!text.empty()) {
        const auto eol = text.find('\n');
        const auto line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        for (std::string_view key : {std::string_view("PRETTY_NAME="), std::string_view("NAME=")}) {
            if (line.starts_with(key) && (name.isEmpty() || key.front() == 'P')) {
                auto v = line.substr(key.size());
                if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') &&
                    v.back() == v.front()) {
                    v = v.substr(1, v.size() - 2);
                }
                if (key.front() == 'P') {
                    return toQString(v);
                }
                name = toQString(v);
            }
        }
    }
    return name;
}

MachineSummary readMachineSummary(const MachineSummaryOptions& options) {
    using platform::readSmallFile;
    MachineSummary s;
    s.hostName = firstLine(readSmallFile(options.root, "proc/sys/kernel/hostname"));
    s.kernel = firstLine(readSmallFile(options.root, "proc/sys/kernel/osrelease"));
    if (auto os = readSmallFile(options.root, "etc/os-release")) {
        s.systemName = parseOsReleaseName(*os);
    } else if (auto usrOs = readSmallFile(options.root, "usr/lib/os-release")) {
        s.systemName = parseOsReleaseName(*usrOs);
    }
    if (auto up = readSmallFile(options.root, "proc/uptime")) {
        s.uptimeSeconds = parseUptime(*up);
    }
    if (auto mem = readSmallFile(options.root, "proc/meminfo")) {
        const auto m = platform::parseMeminfo(*mem);
        s.memoryTotal = m.memTotal;
        s.memoryAvailable = m.memAvailable;
        s.swapTotal = m.swapTotal;
        s.swapFree = m.swapFree;
    }
    s.homePath = options.homePath;
    if (!options.homePath.isEmpty()) {
        if (const auto usage = readDiskUsage(options.homePath.toStdString())) {
            s.homeDiskTotal = static_cast<std::uint64_t>(usage->total);
            s.homeDiskFree = static_cast<std::uint64_t>(usage->free);
        }
    }
    return s;
}

} // namespace tarvik

#include "core/text/metric_format.h"

namespace tarvik {
namespace {

QJsonValue json(const std::optional<std::uint64_t>& v) {
    return v ? QJsonValue(static_cast<double>(*v)) : QJsonValue(QJsonValue::Null);
}

QString unknown() {
    return QStringLiteral("Not reported");
}

QString used(std::optional<std::uint64_t> total, std::optional<std::uint64_t> free) {
    if (!total || !free || *free > *total) {
        return unknown();
    }
    const auto u = *total - *free;
    if (*total == 0) {
        return QStringLiteral("None");
    }
    return QStringLiteral("%1 used of %2 (%3)")
        .arg(MetricFormat::bytes(static_cast<std::int64_t>(u)),
             MetricFormat::bytes(static_cast<std::int64_t>(*total)),
             MetricFormat::percent(static_cast<double>(u) / static_cast<double>(*total)));
}

} // namespace

std::vector<SummaryRow> describe(const MachineSummary& s) {
    std::vector<SummaryRow> rows;
    rows.push_back({QStringLiteral("Host"), s.hostName.isEmpty() ? unknown() : s.hostName});
    QString system = s.systemName.isEmpty() ? QStringLiteral("Linux") : s.systemName;
    if (!s.kernel.isEmpty()) {
        system += QStringLiteral(", kernel ") + s.kernel;
    }
    rows.push_back({QStringLiteral("System"), system});
    rows.push_back({QStringLiteral("Uptime"),
                    s.uptimeSeconds ? MetricFormat::duration(*s.uptimeSeconds) : unknown()});
    rows.push_back({QStringLiteral("Memory"), used(s.memoryTotal, s.memoryAvailable)});
    rows.push_back({QStringLiteral("Swap"), used(s.swapTotal, s.swapFree)});
    QString disk = unknown();
    if (s.homeDiskFree && s.homeDiskTotal) {
        disk =
            QStringLiteral("%1 free of %2 (%3)")
                .arg(MetricFormat::bytes(static_cast<std::int64_t>(*s.homeDiskFree)),
                     MetricFormat::bytes(static_cast<std::int64_t>(*s.homeDiskTotal)), s.homePath);
    }
    rows.push_back({QStringLiteral("Home disk"), disk});
    return rows;
}

QJsonObject toJson(const MachineSummary& s) {
    return QJsonObject{
        {QStringLiteral("host"), s.hostName},
        {QStringLiteral("system"), s.systemName},
        {QStringLiteral("kernel"), s.kernel},
        {QStringLiteral("uptimeSeconds"),
         s.uptimeSeconds ? QJsonValue(*s.uptimeSeconds) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("memoryTotal"), json(s.memoryTotal)},
        {QStringLiteral("memoryAvailable"), json(s.memoryAvailable)},
        {QStringLiteral("memoryUsed"), json(s.memoryUsed())},
        {QStringLiteral("swapTotal"), json(s.swapTotal)},
        {QStringLiteral("swapFree"), json(s.swapFree)},
        {QStringLiteral("home"), s.homePath},
        {QStringLiteral("homeDiskTotal"), json(s.homeDiskTotal)},
        {QStringLiteral("homeDiskFree"), json(s.homeDiskFree)},
    };
}

} // namespace tarvik
