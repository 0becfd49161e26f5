// The process table and the health issues in the window, on the live system and on captures.
#include "app/monitor/monitor_screen.h"
#include "app/monitor/process_panel.h"
#include "app/monitor/process_table_model.h"
#include "app/overview/overview_screen.h"
#include "app/shell/app_models.h"
#include "app/shell/navigator.h"
#include "core/text/metric_format.h"
#include "tests/support/app_options.h"
#include "tests/support/fixture_tree.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;

namespace {

const std::filesystem::path kFixtures = TARVIK_FIXTURES;

} // namespace

TEST(ProcessPanel, ListsFiltersAndQuitsOnlyAfterAConfirmationNamingTheProcessAndItsPid) {
    test::TempHome home;
    AppModels models(optionsIn(home, "/"));
    models.preferences().setValue(pref::kMonitorInterval, 1.0);
    QProcess child;
    child.start("/bin/sh", {"-c", "echo ready; exec sleep 30"});
    ASSERT_TRUE(child.waitForReadyRead(5000));
    const auto pid = static_cast<std::int32_t>(child.processId());

    MonitorScreen screen(models.monitor(), models.navigator());
    screen.show();
    ProcessPanel& panel = screen.processes();
    // Processes are listed while their page is shown.
    screen.findChild<QTabWidget*>("monitorTabs")->setCurrentWidget(&panel);
    // The first sample has no shares; the table fills from the first list on.
    ASSERT_TRUE(test::waitUntil([&] { return panel.select(pid); }));
    EXPECT_GT(panel.table().listedCount(), 3);
    EXPECT_TRUE(panel.findChild<QLabel*>("processTotal")->text().contains(" processes · "));
    EXPECT_TRUE(panel.findChild<QLabel*>("processTotal")->text().contains(" in memory"));

    panel.findChild<QLineEdit*>("processFilter")->setText(QString::number(pid));
    EXPECT_EQ(panel.table().listedCount(), 1);
    // The total follows at the next list: one process, in the singular.
    auto* total = panel.findChild<QLabel*>("processTotal");
    EXPECT_TRUE(test::waitUntil([&] { return total->text().startsWith("1 process · "); }))
        << total->text().toStdString();
    ASSERT_TRUE(panel.select(pid));
    EXPECT_EQ(panel.table().displayName(*panel.table().processAt(0)), "sleep");

    QString asked;
    panel.setConfirm([&](const QString& question, const QString&) {
        asked = question;
        return false;
    });
    auto* quit = panel.findChild<QPushButton*>("quitProcess");
    ASSERT_TRUE(quit->isEnabled());
    quit->click();
    // Two processes may share a name: the pid tells which one is meant.
    EXPECT_EQ(asked, QString("Quit “sleep” (PID %1)?").arg(pid));
    EXPECT_FALSE(child.waitForFinished(300)); // declined: nothing was sent

    panel.setConfirm([](const QString&, const QString&) { return true; });
    quit->click();
    ASSERT_TRUE(
        test::waitUntil([&] { return !panel.isQuitting() && panel.message().contains("quit."); }));
    EXPECT_EQ(panel.message(), QString("“sleep” (PID %1) has quit.").arg(pid));
    EXPECT_TRUE(child.state() == QProcess::NotRunning || child.waitForFinished(3000));

    // Init is refused with the reason, and its buttons stay off.
    panel.findChild<QLineEdit*>("processFilter")->setText("1");
    ASSERT_TRUE(test::waitUntil([&] { return panel.select(1); }));
    EXPECT_FALSE(quit->isEnabled());
    EXPECT_FALSE(panel.findChild<QPushButton*>("forceQuitProcess")->isEnabled());
    EXPECT_TRUE(panel.message().endsWith(" is part of the system and can't be quit from here."))
        << panel.message().toStdString();
    screen.hide();
}

TEST(ProcessTable, AKernelThreadShowsNoMemoryOfItsOwn) {
    ProcessTableModel table;
    ProcessUsage kworker;
    kworker.pid = 42;
    kworker.name = "kworker/0:1";
    kworker.kernelThread = true;
    ProcessUsage shell;
    shell.pid = 4242;
    shell.name = "bash";
    shell.memory = 5'000'000;
    table.setSort(ProcessSort::PID);
    table.setProcesses({kworker, shell});
    ASSERT_EQ(table.rowCount(), 2);
    EXPECT_EQ(table.index(0, ProcessTableModel::Memory).data().toString(), "—");
    EXPECT_EQ(table.index(0, ProcessTableModel::Name).data(Qt::ToolTipRole).toString(),
              "A kernel thread");
    EXPECT_EQ(table.index(1, ProcessTableModel::Memory).data().toString(),
              MetricFormat::bytes(5'000'000));
}

TEST(HealthIssues, ShownInTheMonitorAndSmartScanAndTheirRemediesAct) {
    test::TempHome home;
    test::FixtureTree tree(kFixtures / "linux/debian12-vm");
    // Twenty days up, and half of the 25 GB of memory written to swap.
    QString stat = QString::fromUtf8(tarvik::test::readAll(
        QString::fromStdString((kFixtures / "linux/debian12-vm/proc/stat").string())));
    stat.replace(QRegularExpression("btime \\d+"),
                 QString("btime %1").arg(QDateTime::currentSecsSinceEpoch() - 20 * 86400));
    tree.write("proc/stat", stat.toStdString());
    QString meminfo = QString::fromUtf8(tarvik::test::readAll(
        QString::fromStdString((kFixtures / "linux/debian12-vm/proc/meminfo").string())));
    meminfo.replace(QRegularExpression("SwapTotal: +0 kB"), "SwapTotal: 16000000 kB");
    meminfo.replace(QRegularExpression("SwapFree: +0 kB"), "SwapFree: 3000000 kB");
    tree.write("proc/meminfo", meminfo.toStdString());

    AppModels models(optionsIn(home, tree.root()));
    models.preferences().setValue(pref::kMonitorInterval, 1.0);
    MonitorScreen monitor(models.monitor(), models.navigator());
    EXPECT_TRUE(monitor.findChild<QLabel*>("healthEmpty")->text() == "Checking…");
    OverviewScreen overview(models.overview(), models.navigator(), models.monitor());
    overview.show(); // Smart Scan alone keeps the monitor sampling
    ASSERT_TRUE(
        test::waitUntil([&] { return overview.findChild<QWidget*>("issue_uptime") != nullptr; }));
    ASSERT_NE(overview.findChild<QWidget*>("issue_swap"), nullptr);
    ASSERT_NE(monitor.findChild<QWidget*>("issue_uptime"), nullptr);

    // Heavy swap: the table, ordered by memory, on its own page.
    models.navigator().select(AppSection::Overview);
    auto* tabs = monitor.findChild<QTabWidget*>("monitorTabs");
    ASSERT_NE(tabs, nullptr);
    EXPECT_NE(tabs->currentWidget(), &monitor.processes());
    overview.findChild<QPushButton*>("remedy_swap")->click();
    EXPECT_EQ(models.navigator().selection(), AppSection::Monitor);
    EXPECT_EQ(models.monitor().processSort(), ProcessSort::Memory);
    EXPECT_EQ(tabs->currentWidget(), &monitor.processes());

    // A long uptime explains how to restart, without blocking the window.
    monitor.findChild<QPushButton*>("remedy_uptime")->click();
    auto* advice = monitor.findChild<QMessageBox*>("restartAdvice");
    ASSERT_NE(advice, nullptr);
    EXPECT_TRUE(advice->text().contains("systemctl reboot"));
    advice->close();
    overview.hide();
    EXPECT_FALSE(models.monitor().isRunning());
}
