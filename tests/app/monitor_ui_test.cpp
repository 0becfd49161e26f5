#include "app/monitor/monitor_screen.h"
#include "app/monitor/sparkline.h"
#include "app/shell/app_models.h"
#include "app/shell/panel_figure.h"
#include "app/shell/section_icons.h"
#include "app/shell/tray_icon_renderer.h"
#include "app/shell/tray_item.h"
#include "app/shell/tray_panel.h"
#include "core/text/qt_text.h"
#include "tests/support/app_options.h"
#include "tests/support/fixture_tree.h"
#include "tests/support/shown_text.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
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

// Pixels in a clear colour: the app symbol has them, the readings' ink and halo do not.
int colouredPixels(const QImage& image) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = QColor::fromRgba(image.pixel(x, y));
            n += c.alpha() > 128 && c.hsvSaturation() > 80 ? 1 : 0;
        }
    }
    return n;
}

// The part of an image under a layout's box, given in logical pixels.
QImage crop(const QImage& image, const QRectF& box) {
    const double r = image.devicePixelRatio();
    return image.copy(QRectF(box.topLeft() * r, box.size() * r).toAlignedRect());
}

// The share of a box's pixels drawn in light ink (the glyph or figure, not only its halo).
double inkedShare(const QImage& image, const QRectF& box) {
    const QImage part = crop(image, box);
    int inked = 0;
    for (int y = 0; y < part.height(); ++y) {
        for (int x = 0; x < part.width(); ++x) {
            const QRgb p = part.pixel(x, y);
            inked += qAlpha(p) > 0 && qGray(p) > 128 ? 1 : 0;
        }
    }
    return static_cast<double>(inked) / std::max(1, part.width() * part.height());
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

TEST(TrayIcon, TheSymbolShowsWhenChosenAndWhenNothingElseIs) {
    const std::vector<MenuBarReading> one{{MenuBarStat::Cpu, "23%", "CPU 23%", 0.23}};
    for (double ratio : {1.0, 2.0}) {
        const QImage symbol = appIcon().pixmap(QSize(22, 22), ratio).toImage();
        EXPECT_EQ(renderTrayIcon({true, {}}, 22, ratio), symbol);
        EXPECT_EQ(renderTrayIcon({false, {}}, 22, ratio), symbol); // never an empty item

        // With a reading, the symbol is drawn only when chosen: its colours are what differ,
        // since readings are drawn in one light ink.
        const QImage both = renderTrayIcon({true, one}, 22, ratio);
        const QImage reading = renderTrayIcon({false, one}, 22, ratio);
        EXPECT_NE(both, reading);
        EXPECT_GT(colouredPixels(both), static_cast<int>(22 * 22 * ratio * ratio / 20)) << ratio;
        EXPECT_EQ(colouredPixels(reading), 0) << ratio;
        // Beside the symbol, the reading keeps its glyph and its figure.
        const TrayIconLayout layout = layoutTrayIcon({true, one}, 22);
        ASSERT_TRUE(layout.symbol.has_value());
        ASSERT_EQ(layout.rows.size(), 1u);
        EXPECT_GT(inkedShare(both, layout.rows[0].glyph), 0.1) << ratio;
        EXPECT_GT(inkedShare(both, layout.rows[0].figure), 0.1) << ratio;
    }
}

TEST(TrayIcon, IsDrawnAtTheSizeAndPixelRatioTheTrayAsksFor) {
    const TrayIconContent content{true, {{MenuBarStat::Cpu, "23%", "CPU 23%", 0.23}}};
    const QIcon icon = trayIcon(content);
    EXPECT_TRUE(icon.availableSizes().contains(QSize(22, 22)));
    // 28 is no size the tray icon was ever drawn at ahead: it is drawn for it, not scaled.
    for (int size : {22, 28}) {
        for (double ratio : {1.0, 2.0}) {
            EXPECT_EQ(icon.pixmap(QSize(size, size), ratio).toImage(),
                      renderTrayIcon(content, size, ratio))
                << size << "@" << ratio;
        }
    }
}

TEST(TrayIcon, EveryReadingDrawnCarriesItsGlyphAtOneAndTwoTimesScale) {
    const std::vector<MenuBarReading> two{{MenuBarStat::Cpu, "23%", "CPU 23%", 0.23},
                                          {MenuBarStat::Memory, "41%", "Memory 41%", 0.41}};
    for (int size : {16, 22, 24, 32}) {
        for (double ratio : {1.0, 2.0}) {
            const QImage image = renderTrayIcon({false, two}, size, ratio);
            const int pixels = static_cast<int>(size * ratio);
            EXPECT_EQ(image.size(), QSize(pixels, pixels));
            const TrayIconLayout layout = layoutTrayIcon({false, two}, size);
            EXPECT_FALSE(layout.symbol.has_value());
            ASSERT_EQ(layout.rows.size(), 2u);
            for (const auto& row : layout.rows) {
                EXPECT_GT(inkedShare(image, row.glyph), 0.1) << size << "@" << ratio;
                EXPECT_GT(inkedShare(image, row.figure), 0.1) << size << "@" << ratio;
            }
            // A chip is not a memory stick: the two glyphs differ.
            EXPECT_NE(crop(image, layout.rows[0].glyph), crop(image, layout.rows[1].glyph));
        }
    }
    EXPECT_EQ(trayTooltip(two), "Tarvik\nCPU 23%\nMemory 41%");

    // Three or more as bars, each behind its glyph: a fuller bar fills more of the icon.
    auto bars = [](double fraction) {
        return TrayIconContent{false,
                               {{MenuBarStat::Cpu, "", "", fraction},
                                {MenuBarStat::Memory, "", "", fraction},
                                {MenuBarStat::Gpu, "", "", fraction}}};
    };
    EXPECT_GT(greenPixels(renderTrayIcon(bars(0.6), 24)),
              2 * greenPixels(renderTrayIcon(bars(0.2), 24)));
    EXPECT_GT(greenPixels(renderTrayIcon(bars(0.2), 24)), 0);
    const QImage three = renderTrayIcon(bars(0.5), 24, 2.0);
    for (const auto& row : layoutTrayIcon(bars(0.5), 24).rows) {
        EXPECT_TRUE(row.bar);
        EXPECT_GT(inkedShare(three, row.glyph), 0.1);
    }

    // All seven: as many bars as stay legible, each with its glyph; every one in the tooltip.
    TrayIconContent all{false, {}};
    for (MenuBarStat stat : kAllMenuBarStats) {
        all.readings.push_back({stat, "5%", toQString(title(stat)) + " 5%", 0.05});
    }
    for (int size : {16, 22, 32}) {
        const TrayIconLayout layout = layoutTrayIcon(all, size);
        ASSERT_EQ(layout.rows.size(), maxBarRows(size));
        EXPECT_GE(size / static_cast<double>(layout.rows.size()), 7.0) << size;
        const QImage seven = renderTrayIcon(all, size);
        for (const auto& row : layout.rows) {
            EXPECT_GT(inkedShare(seven, row.glyph), 0.1) << size;
        }
    }
    EXPECT_EQ(maxBarRows(22), 3u);
    EXPECT_EQ(trayTooltip(all.readings).count('\n'), 7);
    EXPECT_TRUE(trayTooltip(all.readings).endsWith("\nAgent 5%"));
}

TEST(TrayItem, ShowsTheSymbolTheReadingsOrBothAsChosen) {
    test::TempHome home;
    AppModels models(optionsIn(home, kFixtures / "linux/debian12-vm"));
    TrayItem tray(models);
    auto shown = [&tray] {
        return tray.icon()->icon().pixmap(QSize(22, 22), 1.0).toImage();
    };
    const QImage symbol = appIcon().pixmap(QSize(22, 22), 1.0).toImage();
    EXPECT_EQ(shown(), symbol); // the defaults: the symbol alone

    models.preferences().setValue(pref::kMenuBarShowsStats, true);
    ASSERT_TRUE(waitForReadings(models.monitor(), 1));
    const QImage both = shown();
    EXPECT_NE(both, symbol);
    EXPECT_GT(colouredPixels(both), 0);

    models.preferences().setValue(pref::kMenuBarShowsIcon, false);
    const QImage readings = shown();
    EXPECT_NE(readings, symbol);
    EXPECT_EQ(colouredPixels(readings), 0);

    models.preferences().setValue(pref::kMenuBarShowsStats, false);
    EXPECT_EQ(shown(), symbol); // neither chosen: the item still shows something
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

// The tray item and its panel over a captured machine; keeping awake is asked of a bus where
// nothing answers, so a test never holds the real machine awake.
class TrayPanelTest : public ::testing::Test {
protected:
    static AppModels::Options options(const test::TempHome& home) {
        auto o = optionsIn(home, kFixtures / "linux/debian12-vm");
        o.keepAwakeBuses = test::withoutLogind(home).keepAwakeBuses;
        return o;
    }

    test::TempHome home;
    AppModels models{options(home)};
    TrayItem tray{models};
    TrayPanel& panel = *tray.panel();
};

TEST_F(TrayPanelTest, HoldsTheMonitorWhileOpenAndShowsTheLiveFiguresInTabs) {
    QStringList titles;
    for (int i = 0; i < panel.tabs()->count(); ++i) {
        titles << test::shownText(panel.tabs()->tabText(i));
    }
    EXPECT_EQ(titles, (QStringList{"System", "Network", "Battery", "Agents", "Keep Awake"}));

    tray.openPanel();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_GE(panel.width(), 340);
    EXPECT_LE(panel.width(), 380);
    EXPECT_TRUE(models.monitor().isRunning());
    EXPECT_DOUBLE_EQ(models.monitor().currentInterval(), 2.0);
    ASSERT_TRUE(waitForReadings(models.monitor(), 2));
    auto figure = [this](const char* name) {
        const auto* f = panel.findChild<PanelFigure*>(QStringLiteral("figure_") + name);
        EXPECT_NE(f, nullptr) << name;
        return f;
    };
    EXPECT_TRUE(figure("cpu")->value().endsWith("%")) << figure("cpu")->value().toStdString();
    EXPECT_TRUE(figure("memory")->value().endsWith("%"));
    EXPECT_TRUE(figure("memory")->detail().endsWith(" of 25.3 GB"));
    EXPECT_TRUE(figure("download")->value().endsWith("/s"));
    EXPECT_TRUE(figure("download")->detail().endsWith(" this session"));
    // What the machine lacks is a sentence, not a zero.
    EXPECT_EQ(figure("battery")->value(), "");
    EXPECT_EQ(figure("battery")->detail(), "This computer has no battery.");
    EXPECT_EQ(figure("gpu")->value(), "");
    EXPECT_EQ(figure("gpu")->detail(), "No graphics processor reports its load.");

    panel.hide();
    EXPECT_FALSE(models.monitor().isRunning());
}

TEST_F(TrayPanelTest, EachTabsButtonsOpenTheWindowAtTheirSection) {
    QSignalSpy asked(&panel, &TrayPanel::openSection);
    int opened = 0;
    QObject::connect(&tray, &TrayItem::openWindowRequested, [&opened] { ++opened; });
    const std::vector<std::vector<AppSection>> expected{
        {AppSection::Monitor},
        {AppSection::Monitor, AppSection::SpeedTest},
        {AppSection::Monitor},
        {AppSection::Agents},
        {AppSection::KeepAwake}};
    ASSERT_EQ(panel.tabs()->count(), static_cast<int>(expected.size()));
    for (int tab = 0; tab < panel.tabs()->count(); ++tab) {
        for (AppSection section : expected[static_cast<std::size_t>(tab)]) {
            const SectionInfo& s = info(section);
            tray.openPanel();
            panel.tabs()->setCurrentIndex(tab);
            models.navigator().select(AppSection::Settings);
            auto* button = panel.tabs()->widget(tab)->findChild<QPushButton*>(
                QStringLiteral("open_") + toQString(s.rawKey));
            ASSERT_NE(button, nullptr) << tab << " " << s.rawKey;
            EXPECT_EQ(test::shownText(button->text()), toQString(s.title));
            EXPECT_TRUE(QKeySequence::mnemonic(button->text()).isEmpty());
            button->click();
            EXPECT_FALSE(panel.isVisible());
            EXPECT_EQ(models.navigator().selection(), section) << tab;
            ASSERT_FALSE(asked.isEmpty());
            EXPECT_EQ(asked.takeLast().at(0).value<AppSection>(), section);
        }
    }
    EXPECT_EQ(opened, 6);
}

TEST_F(TrayPanelTest, ArrowsAndCtrlTabMoveBetweenTabsAndEscapeClosesIt) {
    QTabWidget& tabs = *panel.tabs();
    tabs.setCurrentIndex(0);
    tray.openPanel();
    QTest::keyClick(tabs.tabBar(), Qt::Key_Right);
    EXPECT_EQ(tabs.currentIndex(), 1);
    QTest::keyClick(tabs.tabBar(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs.currentIndex(), 2);
    QTest::keyClick(tabs.currentWidget(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(tabs.currentIndex(), 1);
    QTest::keyClick(tabs.tabBar(), Qt::Key_Left);
    EXPECT_EQ(tabs.currentIndex(), 0);
    QTest::keyClick(tabs.currentWidget()->findChild<QPushButton*>(), Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_FALSE(models.monitor().isRunning());
}

TEST_F(TrayPanelTest, AgentsAndKeepAwakeSayWhatIsThereAndShowOnlyTheStateHeld) {
    for (const auto& card : std::vector(models.agents().cards())) {
        models.agents().setEnabled(card.provider, false);
    }
    tray.openPanel();
    panel.tabs()->setCurrentIndex(3);
    auto* none = panel.findChild<QLabel*>("noAgents");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->text(), "No agent is shown. Choose agents on the Agents screen.");

    // Keeping awake is asked for where logind can't give it: the page says Off, and why.
    panel.tabs()->setCurrentIndex(4);
    const auto* state = panel.findChild<PanelFigure*>("awakeState");
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->value(), "Off");
    auto* start = panel.findChild<QPushButton*>("awakeStart");
    ASSERT_NE(start, nullptr);
    ASSERT_NE(start->menu(), nullptr);
    QStringList offered;
    for (QAction* a : start->menu()->actions()) {
        offered << a->text();
    }
    EXPECT_EQ(offered,
              (QStringList{"Keep Awake for 15 min", "Keep Awake for 1 h", "Keep Awake for 2 h",
                           "Keep Awake for 4 h", "Keep Awake for 8 h", "Until you turn it off"}));
    start->menu()->actions().at(1)->trigger();
    EXPECT_FALSE(models.keepAwake().state().isActive);
    EXPECT_EQ(state->value(), "Off");
    auto* error = panel.findChild<QLabel*>("awakeError");
    ASSERT_NE(error, nullptr);
    EXPECT_FALSE(error->isHidden());
    EXPECT_EQ(error->text(), models.keepAwake().error());
    EXPECT_TRUE(panel.findChild<QPushButton*>("awakeOff")->isHidden());
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
