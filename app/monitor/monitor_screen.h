#pragma once

#include "app/monitor/sparkline.h"
#include "app/monitor/system_monitor_model.h"

#include <QWidget>
#include <map>
#include <string_view>
#include <vector>

class QGridLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QTabWidget;

namespace tarvik {

class HealthIssuesView;
class Navigator;
class ProcessPanel;

// The health issues, then two pages: the live readings (CPU total and per core, memory, network
// and disk with session totals, GPU, battery, load average and uptime, each with a short
// history) and the process table.
class MonitorScreen : public QWidget {
    Q_OBJECT
public:
    MonitorScreen(SystemMonitorModel& model, Navigator& navigator, QWidget* parent = nullptr);

    // The figure and detail of a tile, by its name ("cpu", "memory", …), for tests and
    // accessibility.
    QString tileValue(const QString& name) const;
    QString tileDetail(const QString& name) const;
    ProcessPanel& processes() { return *processes_; }

private:
    struct Tile {
        QLabel* value = nullptr;
        QLabel* detail = nullptr;
        Sparkline* chart = nullptr;
        std::optional<Metric> metric; // the model's history the chart draws
    };
    Tile& addTile(const QString& name, std::string_view symbol, const QString& title, int row,
                  int column, std::optional<Metric> metric, bool rates);
    void render();
    void renderCores();

    SystemMonitorModel& model_;
    Navigator& navigator_;
    HealthIssuesView* health_ = nullptr;
    ProcessPanel* processes_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    QGridLayout* grid_ = nullptr;
    std::map<QString, Tile> tiles_;
    QWidget* coresBox_ = nullptr;
    QGridLayout* cores_ = nullptr;
    std::vector<QProgressBar*> coreBars_;
    QPushButton* resetTotals_ = nullptr;
};

} // namespace tarvik
