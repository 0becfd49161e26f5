#pragma once

#include "app/monitor/sparkline.h"

#include <QWidget>
#include <map>
#include <vector>

class QGridLayout;
class QLabel;
class QProgressBar;
class QPushButton;

namespace tarvik {

class SystemMonitorModel;

// The live readings: CPU (total and per core), memory, network and disk with session totals,
// GPU, battery, load average and uptime, each with a short history.
class MonitorScreen : public QWidget {
    Q_OBJECT
public:
    explicit MonitorScreen(SystemMonitorModel& model, QWidget* parent = nullptr);
    ~MonitorScreen() override;

    // The figure and detail of a tile, by its name ("cpu", "memory", …), for tests and
    // accessibility.
    QString tileValue(const QString& name) const;
    QString tileDetail(const QString& name) const;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    struct Tile {
        QLabel* value = nullptr;
        QLabel* detail = nullptr;
        Sparkline* chart = nullptr;
        History history;
        History second; // the other direction for network and disk
    };
    Tile& addTile(const QString& name, const QString& title, int row, int column, bool rates);
    void render();
    void renderCores();

    SystemMonitorModel& model_;
    QGridLayout* grid_ = nullptr;
    std::map<QString, Tile> tiles_;
    QWidget* coresBox_ = nullptr;
    QGridLayout* cores_ = nullptr;
    std::vector<QProgressBar*> coreBars_;
    QPushButton* resetTotals_ = nullptr;
    bool holding_ = false;
};

} // namespace tarvik
