#pragma once

#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace tarvik {

class HealthIssuesView;
class Navigator;
class OverviewModel;
class SystemMonitorModel;

// Smart Scan: the machine at a glance. Each capability adds its tile below the summary.
class OverviewScreen : public QWidget {
    Q_OBJECT
public:
    OverviewScreen(OverviewModel& model, Navigator& navigator, SystemMonitorModel& monitor,
                   QWidget* parent = nullptr);
    ~OverviewScreen() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void render();

    OverviewModel& model_;
    Navigator& navigator_;
    SystemMonitorModel& monitor_;
    HealthIssuesView* health_ = nullptr;
    bool holding_ = false; // the monitor samples while Smart Scan shows its health
    QLabel* junk_ = nullptr;
    QFormLayout* rows_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* refresh_ = nullptr;
};

} // namespace tarvik
