#pragma once

#include "core/monitor/system_health.h"

#include <QWidget>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace tarvik {

class Navigator;
class SystemMonitorModel;

// The health issues, most severe first, each with its icon, words and remedy button.
class HealthIssuesView : public QWidget {
    Q_OBJECT
public:
    explicit HealthIssuesView(QWidget* parent = nullptr);
    // No reading yet shows "Checking…"; an empty list says nothing needs attention.
    void setIssues(const std::optional<std::vector<HealthIssue>>& issues);
    // Shows nothing at all while nothing needs attention (where a page has no room to spare).
    void setHidesWhenClear(bool on) { hidesWhenClear_ = on; }

signals:
    void remedyRequested(tarvik::HealthIssue::Remedy remedy);

private:
    QVBoxLayout* rows_ = nullptr;
    QLabel* empty_ = nullptr;
    QStringList shownIds_;
    bool hidesWhenClear_ = false;
    std::vector<std::pair<QLabel*, QLabel*>> labels_; // title, detail per row
};

// What a remedy button does: the process table in the right order, System Junk, or how to
// restart.
void applyRemedy(HealthIssue::Remedy remedy, SystemMonitorModel& monitor, Navigator& navigator,
                 QWidget* parent);

} // namespace tarvik
