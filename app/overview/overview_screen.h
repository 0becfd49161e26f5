#pragma once

#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace tarvik {

class AgentsModel;
class HealthIssuesView;
class KeepAwakeController;
class Navigator;
class OverviewModel;
class SystemMonitorModel;

// Smart Scan: the machine at a glance. Each capability adds its tile below the summary.
class OverviewScreen : public QWidget {
    Q_OBJECT
public:
    OverviewScreen(OverviewModel& model, Navigator& navigator, SystemMonitorModel& monitor,
                   AgentsModel* agents = nullptr, KeepAwakeController* keepAwake = nullptr,
                   QWidget* parent = nullptr);
    ~OverviewScreen() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void render();
    void renderAgents();
    void renderKeepAwake();

    OverviewModel& model_;
    Navigator& navigator_;
    SystemMonitorModel& monitor_;
    AgentsModel* agents_ = nullptr; // the agent-limits tile, when there is one
    QLabel* agentLimits_ = nullptr;
    KeepAwakeController* keepAwake_ = nullptr; // the keep-awake tile, when there is one
    QLabel* keepAwakeTile_ = nullptr;
    HealthIssuesView* health_ = nullptr;
    bool holding_ = false; // the monitor samples while Smart Scan shows its health
    QLabel* junk_ = nullptr;
    QFormLayout* rows_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* refresh_ = nullptr;
};

} // namespace tarvik
