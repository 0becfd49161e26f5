#pragma once

#include "app/shell/background_job.h"
#include "core/monitor/process_control.h"

#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace tarvik {

class ProcessTableModel;
class SystemMonitorModel;

// The process table with its filter and order, and Quit and Force Quit for the selected
// process. Holds the monitor's process list while shown.
class ProcessPanel : public QWidget {
    Q_OBJECT
public:
    explicit ProcessPanel(SystemMonitorModel& monitor, QWidget* parent = nullptr);

    // Replaces the confirmation dialog (tests answer it themselves).
    using Confirm = std::function<bool(const QString& question, const QString& detail)>;
    void setConfirm(Confirm confirm) { confirm_ = std::move(confirm); }

    ProcessTableModel& table() { return *table_; }
    // Selects the process with this pid; false when it isn't listed.
    bool select(std::int32_t pid);
    QString message() const;
    bool isQuitting() const { return quitJob_.isRunning(); }

private:
    void refresh();
    void selectionChanged();
    void quitSelected(bool force);
    const ProcessUsage* selected() const;

    SystemMonitorModel& monitor_;
    ProcessTableModel* table_ = nullptr;
    QLineEdit* filter_ = nullptr;
    QComboBox* sort_ = nullptr;
    QTableView* view_ = nullptr;
    QLabel* total_ = nullptr;
    QLabel* message_ = nullptr;
    QPushButton* quit_ = nullptr;
    QPushButton* forceQuit_ = nullptr;
    Confirm confirm_;
    BackgroundJob<QuitOutcome> quitJob_;
    QString quittingName_;
};

} // namespace tarvik
