#include "app/cleanup/cleanup_screen.h"
#include "app/junk/junk_screen.h"
#include "app/overview/overview_screen.h"
#include "app/shell/app_models.h"
#include "app/shell/stat_card.h"
#include "core/text/metric_format.h"
#include "tests/support/app_options.h"
#include "tests/support/fixture_tree.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QFile>
#include <QLabel>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;
using tarvik::test::TempHome;

namespace {

// The models of a temporary home whose System Junk looks only there and cleans only there.
AppModels::Options junkIn(const TempHome& home, const std::filesystem::path& root = "/") {
    auto o = optionsIn(home, root);
    const QString h = home.path();
    o.junk = JunkModel::Dependencies{
        [h] {
            JunkScanner::Options s;
            s.home = h;
            return s;
        },
        [h] { return Cleaner(SafetyGuard(h, {}), Trash(h + "/.local/share/Trash")); }, QString()};
    return o;
}

QString cardValue(const QWidget& screen, const char* card) {
    const auto* c = screen.findChild<StatCard*>(card);
    return c ? c->valueLabel()->text() : QString();
}

} // namespace

TEST(OverviewScreen, TheJunkFigureIsSystemJunksOwnScanAndFollowsACleanThere) {
    TempHome home;
    test::writeFile(home.path() + "/.cache/app/a", QByteArray(40000, 'z'));
    test::writeFile(home.path() + "/.cache/other/b", QByteArray(20000, 'z'));
    AppModels models(junkIn(home));
    int scans = 0;
    QObject::connect(&models.junk(), &JunkModel::scanStarted, [&scans] { ++scans; });

    OverviewScreen overview(models.overview(), models.navigator(), models.monitor());
    overview.show();
    ASSERT_TRUE(test::waitUntil([&] { return models.overview().junkBytes().has_value(); }));
    const std::int64_t measured = *models.overview().junkBytes();
    EXPECT_GT(measured, 60000);
    EXPECT_EQ(cardValue(overview, "junkCard"), MetricFormat::bytes(measured));

    // System Junk lists what Smart Scan just measured: no second scan.
    JunkScreen junk(models.junk(), home.path());
    overview.hide();
    junk.show();
    EXPECT_EQ(scans, 1);
    EXPECT_TRUE(models.junk().hasScanned());
    ASSERT_GT(junk.tree()->topLevelItemCount(), 0);
    EXPECT_EQ(models.junk().selectedSize(), measured);

    // A clean there shows on Smart Scan at once, without a Refresh.
    junk.frame().setConfirm([](const QString&, const QString&) { return true; });
    models.junk().setItemSelected(home.path() + "/.cache/other", false);
    junk.frame().requestRemoval();
    ASSERT_TRUE(test::waitUntil([&] { return !models.junk().isRemoving(); }));
    ASSERT_FALSE(QFile::exists(home.path() + "/.cache/app"));
    ASSERT_TRUE(models.overview().junkBytes().has_value());
    EXPECT_LT(*models.overview().junkBytes(), measured);
    EXPECT_GT(*models.overview().junkBytes(), 0); // the deselected folder is still there
    EXPECT_EQ(cardValue(overview, "junkCard"), MetricFormat::bytes(*models.overview().junkBytes()));
    EXPECT_EQ(scans, 1);

    // Refresh measures again.
    overview.show();
    models.overview().refresh();
    ASSERT_TRUE(test::waitUntil([&] { return !models.overview().isLoading(); }));
    EXPECT_EQ(scans, 2);
}

TEST(OverviewScreen, FiguresAreReadAgainEachTimeSmartScanIsShown) {
    TempHome home;
    test::FixtureTree tree;
    tree.write("proc/uptime", "120.00 200.00\n");
    tree.write("proc/meminfo", "MemTotal: 8000000 kB\nMemAvailable: 6000000 kB\n"
                               "SwapTotal: 0 kB\nSwapFree: 0 kB\n");
    AppModels models(junkIn(home, tree.root()));
    OverviewScreen overview(models.overview(), models.navigator(), models.monitor(), nullptr,
                            nullptr, &models.dockFolders());
    const auto uptime = [&] {
        for (auto* label : overview.findChildren<QLabel*>()) {
            if (label->accessibleName() == "Uptime") {
                return label->text();
            }
        }
        return QString();
    };
    overview.show();
    ASSERT_TRUE(test::waitUntil([&] { return !uptime().isEmpty(); }));
    EXPECT_EQ(uptime(), MetricFormat::duration(120));
    EXPECT_EQ(cardValue(overview, "memoryCard"), "25%");
    const auto* dock = overview.findChild<QLabel*>("dockFoldersTile");
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(dock->text(), "No folders yet");

    // Time passes, memory fills and a folder is made while another screen is shown.
    overview.hide();
    AppFolder folder;
    folder.id = QUuid::createUuid();
    folder.name = "Work";
    ASSERT_TRUE(models.dockFolders().store().save({folder}, nullptr));
    tree.write("proc/uptime", "7300.00 200.00\n");
    tree.write("proc/meminfo", "MemTotal: 8000000 kB\nMemAvailable: 2000000 kB\n"
                               "SwapTotal: 0 kB\nSwapFree: 0 kB\n");
    overview.show();
    ASSERT_TRUE(test::waitUntil([&] { return uptime() == MetricFormat::duration(7300); }))
        << uptime().toStdString();
    EXPECT_EQ(cardValue(overview, "memoryCard"), "75%");
    EXPECT_EQ(dock->text(), "1 folder, 0 in the dock");
}
