#include "core/monitor/machine_summary.h"
#include "core/monitor/meminfo.h"
#include "core/text/metric_format.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;

QString row(const std::vector<SummaryRow>& rows, const QString& label) {
    for (const auto& r : rows) {
        if (r.label == label) {
            return r.value;
        }
    }
    return "<missing row>";
}
} // namespace

TEST(MachineSummary, ReadsACapturedDebianMachine) {
    QTemporaryDir home;
    const auto s = readMachineSummary({kFixtures / "linux/debian12-vm", home.path()});
    EXPECT_EQ(s.hostName, "vm");
    EXPECT_EQ(s.systemName, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(s.kernel, "6.18.44-fc-v769");
    ASSERT_TRUE(s.uptimeSeconds);
    EXPECT_DOUBLE_EQ(*s.uptimeSeconds, 817.09);
    EXPECT_EQ(s.memoryTotal, 24683656ull * 1024);
    EXPECT_EQ(s.memoryAvailable, 24344484ull * 1024);
    EXPECT_EQ(s.memoryUsed(), (24683656ull - 24344484ull) * 1024);
    EXPECT_EQ(s.swapTotal, 0u);
    ASSERT_TRUE(s.homeDiskTotal && s.homeDiskFree); // the real file system of the temp folder
    EXPECT_LE(*s.homeDiskFree, *s.homeDiskTotal);

    const auto rows = describe(s);
    EXPECT_EQ(row(rows, "Uptime"), "13 minutes");
    EXPECT_EQ(row(rows, "Memory"), "347 MB used of 25.3 GB (1%)");
    EXPECT_EQ(row(rows, "Swap"), "None");
    EXPECT_EQ(row(rows, "System"), "Debian GNU/Linux 12 (bookworm), kernel 6.18.44-fc-v769");
}

TEST(MachineSummary, MissingFilesAndFieldsAreReportedAsMissingNotAsZero) {
    // An older kernel's meminfo has no MemAvailable; nothing else of a machine is there.
    const auto s = readMachineSummary({kFixtures / "linux/node-exporter", ""});
    EXPECT_EQ(s.memoryTotal, 3742148ull * 1024);
    EXPECT_FALSE(s.memoryAvailable);
    EXPECT_FALSE(s.memoryUsed());
    EXPECT_FALSE(s.uptimeSeconds);
    EXPECT_FALSE(s.homeDiskFree);
    EXPECT_TRUE(s.hostName.isEmpty());
    const auto rows = describe(s);
    EXPECT_EQ(row(rows, "Memory"), "Not reported");
    EXPECT_EQ(row(rows, "Uptime"), "Not reported");
    EXPECT_EQ(row(rows, "Home disk"), "Not reported");
    EXPECT_EQ(row(rows, "Swap"), "1.1 GB used of 4.3 GB (25%)");

    const QJsonObject json = toJson(s);
    EXPECT_TRUE(json["memoryAvailable"].isNull());
    EXPECT_TRUE(json["uptimeSeconds"].isNull());
    EXPECT_EQ(json["memoryTotal"].toDouble(), 3742148.0 * 1024);
}

TEST(MachineSummary, ParsersSurviveMalformedInput) {
    EXPECT_FALSE(parseUptime(""));
    EXPECT_FALSE(parseUptime("garbage 12"));
    EXPECT_FALSE(parseUptime("-5 3"));
    EXPECT_DOUBLE_EQ(*parseUptime("12.5 40.1\n"), 12.5);

    EXPECT_EQ(parseOsReleaseName("NAME=\"Arch Linux\"\nPRETTY_NAME=\"Arch Linux\"\n"),
              "Arch Linux");
    EXPECT_EQ(parseOsReleaseName("NAME='Fedora'\nVERSION=40"), "Fedora"); // no PRETTY_NAME
    EXPECT_EQ(parseOsReleaseName("PRETTY_NAME=Gentoo"), "Gentoo");
    EXPECT_EQ(parseOsReleaseName(""), "");

    const auto m = platform::parseMeminfo("MemTotal: 100 kB\nMemFree:\nbroken line\n"
                                          "MemAvailable:   40 kB\nHugePages_Total: 7\n"
                                          "SwapTotal: x kB\nCached: 10 kB"); // no final newline
    EXPECT_EQ(m.memTotal, 102400u);
    EXPECT_EQ(m.memAvailable, 40960u);
    EXPECT_FALSE(m.memFree);
    EXPECT_FALSE(m.swapTotal);
    EXPECT_EQ(m.cached, 10240u);
}

TEST(MetricFormat, BytesRatesDurationsAndPercentages) {
    using namespace MetricFormat;
    EXPECT_EQ(bytes(0), "0 bytes");
    EXPECT_EQ(bytes(1), "1 byte");
    EXPECT_EQ(bytes(999), "999 bytes");
    EXPECT_EQ(bytes(1000), "1.0 KB");
    EXPECT_EQ(bytes(1'530'000), "1.5 MB");
    EXPECT_EQ(bytes(999'960), "1.0 MB"); // never "1000.0 KB"
    EXPECT_EQ(bytes(270'553'174'016), "271 GB");
    EXPECT_EQ(bytes(-2'000'000), "-2.0 MB");

    EXPECT_EQ(rate(0.5), "0 KB/s");
    EXPECT_EQ(rate(-3), "0 KB/s");
    EXPECT_EQ(rate(2'500'000), "2.5 MB/s");

    EXPECT_EQ(duration(-10), "0 minutes");
    EXPECT_EQ(duration(59), "0 minutes");
    EXPECT_EQ(duration(61), "1 minute");
    EXPECT_EQ(duration(3599), "59 minutes");
    EXPECT_EQ(duration(3600), "1 hour");
    EXPECT_EQ(duration(3 * 3600 + 12 * 60 + 59), "3 hours, 12 minutes");
    EXPECT_EQ(duration(86399), "23 hours, 59 minutes");
    EXPECT_EQ(duration(86400), "1 day");
    EXPECT_EQ(duration(15 * 86400 + 2 * 3600), "15 days, 2 hours");

    EXPECT_EQ(percent(0.424), "42%");
    EXPECT_EQ(percent(1.0), "100%");
}
