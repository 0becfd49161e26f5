#pragma once

#include <QTimer>
#include <QWidget>
#include <map>

class QFormLayout;
class QLabel;
class QPushButton;

namespace tarvik {

class DockFolders;

class AgentsModel;
class Card;
class HealthIssuesView;
class KeepAwakeController;
class Navigator;
class OverviewModel;
class StatCard;
class SystemMonitorModel;

// Smart Scan: the machine at a glance, a card for each capability. The figures stay current: the
// summary is read again whenever the screen is shown and every minute while it is, and the junk
// figure is System Junk's own, so a clean there shows here at once.
class OverviewScreen : public QWidget {
    Q_OBJECT
public:
    OverviewScreen(OverviewModel& model, Navigator& navigator, SystemMonitorModel& monitor,
                   AgentsModel* agents = nullptr, KeepAwakeController* keepAwake = nullptr,
                   const DockFolders* dock = nullptr, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void render();
    void renderJunk();
    void renderAgents();
    void renderKeepAwake();
    void renderDock();

    OverviewModel& model_;
    Navigator& navigator_;
    SystemMonitorModel& monitor_;
    AgentsModel* agents_ = nullptr; // the agent-limits card, when there is one
    QLabel* agentLimits_ = nullptr;
    KeepAwakeController* keepAwake_ = nullptr; // the keep-awake card, when there is one
    QLabel* keepAwakeTile_ = nullptr;
    const DockFolders* dock_ = nullptr; // the Dock Folders card, when there is one
    QLabel* dockTile_ = nullptr;
    HealthIssuesView* health_ = nullptr;
    StatCard* disk_ = nullptr;
    StatCard* memory_ = nullptr;
    StatCard* junk_ = nullptr;
    QFormLayout* rows_ = nullptr;
    std::map<QString, QLabel*> machineRows_; // by the row's label
    QLabel* state_ = nullptr;
    QPushButton* refresh_ = nullptr;
    QTimer tick_;
};

} // namespace tarvik
