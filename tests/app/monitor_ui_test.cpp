#include "app/monitor/monitor_screen.h"
#include "app/monitor/sparkline.h"
#include "app/shell/app_models.h"
#include "app/shell/tray_icon_renderer.h"
#include "app/shell/tray_item.h"
#include "app/shell/tray_panel.h"
#include "tests/support/app_options.h"
#include "tests/support/fixture_tree.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QLabel>
#include <QSystemTrayIcon>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;

namespace {

const std::filesystem::path kFixtures = TARVIK_FIXTURES;

bool waitForReadings(SystemMonitorModel& model, int count) {
    int seen = 0;
    auto c = QObject::connect(&model, &SystemMonitorModel::readingChanged, [&seen] { ++seen; });
    test::waitUntil([&] { return seen >= count; });
    QObject::disconnect(c);
    return seen >= count;
}

int opaquePixels(const QImage& image) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            n += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
        }
    }
    return n;
}

// Pixels of a bar's fill: clearly green (low readings are drawn green).
int greenPixels(const QImage& image) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            n += qAlpha(p) > 200 && qGreen(p) > qRed(p) + 60 ? 1 : 0;
        }
    }
    return n;
}

} // namespace

TEST(TrayReadings, DrawnLegiblyAtTraySizesWithWordsInTheTooltip) {
    const std::vector<MenuBarReading> two{{MenuBarStat::Cpu, "23%", "CPU 23%", 0.23},
                                          {MenuBarStat::Memory, "41%", "Memory 41%", 0.41}};
    for (int size : {16, 22, 24, 48}) {
        const QImage image = renderTrayReadings(two, size);
        EXPECT_EQ(image.size(), QSize(size, size));
        // Figures cover a real part of the icon, not a speck in a corner.
        EXPECT_GT(opaquePixels(image), size * size / 8) << size;
    }
    EXPECT_EQ(trayTooltip(two), "Tarvik\nCPU 23%\nMemory 41%");

    // Three or more as bars: a fuller bar fills more of the icon than an emptier one.
    auto bars = [](double fraction) {
        return renderTrayReadings({{MenuBarStat::Cpu, "", "", fraction},
                                   {MenuBarStat::Memory, "", "", fraction},
                                   {MenuBarStat::Gpu, "", "", fraction}},
                                  24);
    };
    EXPECT_GT(greenPixels(bars(0.6)), 2 * greenPixels(bars(0.2)));
    EXPECT_GT(greenPixels(bars(0.2)), 0);
    EXPECT_EQ(opaquePixels(renderTrayReadings({}, 24)), 0);
}

TEST(TrayItem, ReadingsHoldTheMonitorOnlyWhileTheyAreShown) {
    test::TempHome home;
    AppModels models(optionsIn(home, kFixtures / "linux/debian12-vm"));
    TrayItem tray(models);
    EXPECT_FALSE(tray.showsReadings());
    EXPECT_FALSE(models.monitor().isRunning());
    EXPECT_EQ(tray.toolTip(), "Tarvik");

    models.preferences().setValue(pref::kMenuBarShowsStats, true);
    EXPECT_TRUE(tray.showsReadings());
    EXPECT_TRUE(models.monitor().isRunning());
    EXPECT_DOUBLE_EQ(models.monitor().currentInterval(), 5.0);
    ASSERT_TRUE(waitForReadings(models.monitor(), 1));
    EXPECT_TRUE(tray.toolTip().startsWith("Tarvik\nCPU ")) << tray.toolTip().toStdString();
    EXPECT_TRUE(tray.toolTip().contains("\nMemory ")) << tray.toolTip().toStdString();

    models.preferences().setValue(pref::kMenuBarStats, "battery");
    EXPECT_EQ(tray.toolTip(), "Tarvik\nBattery not available"); // a VM: a dash, no made-up figure

    models.preferences().setValue(pref::kShowMenuBarExtra, false);
    EXPECT_FALSE(tray.showsReadings());
    EXPECT_FALSE(models.monitor().isRunning());
}

TEST(TrayPanel, HoldsTheMonitorWhileOpenAndOpensTheWindowAtASection) {
    test::TempHome home;
    AppModels models(optionsIn(home, kFixtures / "linux/debian12-vm"));
    TrayItem tray(models);
    AppSection asked = AppSection::Overview;
    int opened = 0;
    QObject::connect(&tray, &TrayItem::openWindowRequested, [&] {
        ++opened;
        asked = models.navigator().selection();
    });
    tray.openPanel();
    EXPECT_TRUE(tray.panel()->isVisible());
    EXPECT_TRUE(models.monitor().isRunning());
    EXPECT_DOUBLE_EQ(models.monitor().currentInterval(), 2.0);
    ASSERT_TRUE(waitForReadings(models.monitor(), 1));
    bool sawMemory = false;
    for (auto* label : tray.panel()->findChildren<QLabel*>()) {
        sawMemory = sawMemory || label->accessibleName() == "Memory";
    }
    EXPECT_TRUE(sawMemory);

    emit tray.panel()->openSection(AppSection::Monitor);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(asked, AppSection::Monitor);
    tray.panel()->hide();
    EXPECT_FALSE(models.monitor().isRunning());
}

TEST(MonitorScreen, ShowsLiveFiguresAndSaysWhatTheMachineLacks) {
    test::TempHome home;
    AppModels models(optionsIn(home, kFixtures / "linux/debian12-vm"));
    MonitorScreen screen(models.monitor(), models.navigator());
    EXPECT_FALSE(models.monitor().isRunning());
    screen.show();
    EXPECT_TRUE(models.monitor().isRunning());
    ASSERT_TRUE(waitForReadings(models.monitor(), 2));
    EXPECT_TRUE(screen.tileValue("cpu").endsWith("%")) << screen.tileValue("cpu").toStdString();
    EXPECT_TRUE(screen.tileDetail("cpu").contains("2 cores"));
    EXPECT_TRUE(screen.tileValue("memory").contains(" of 25.3 GB"));
    EXPECT_EQ(screen.tileValue("battery"), "—");
    EXPECT_EQ(screen.tileDetail("battery"), "This computer has no battery.");
    EXPECT_EQ(screen.tileValue("gpu"), "—");
    // What the machine lacks is said, never drawn as a flat line at zero.
    for (const char* lacking : {"tile_battery", "tile_gpu"}) {
        auto* tile = screen.findChild<QWidget*>(lacking);
        ASSERT_NE(tile, nullptr) << lacking;
        EXPECT_FALSE(tile->findChild<Sparkline*>()->isVisibleTo(tile)) << lacking;
    }
    EXPECT_TRUE(screen.findChild<QWidget*>("tile_cpu")
                    ->findChild<Sparkline*>()
                    ->isVisibleTo(screen.findChild<QWidget*>("tile_cpu")));
    EXPECT_EQ(screen.tileValue("load"), "1.05"); // the captured /proc/loadavg
    EXPECT_TRUE(screen.tileDetail("network").startsWith("This session: "));
    screen.hide();
    EXPECT_FALSE(models.monitor().isRunning());
}
