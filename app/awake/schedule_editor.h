#pragma once

#include "core/awake/keep_awake_schedule.h"

#include <QDialog>
#include <array>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QTimeEdit;

namespace tarvik {

// Edits one keep-awake schedule: its name, days and times. OK stays off while the schedule
// could never open.
class ScheduleEditor : public QDialog {
    Q_OBJECT
public:
    explicit ScheduleEditor(const KeepAwakeSchedule& schedule, QWidget* parent = nullptr);

    KeepAwakeSchedule schedule() const;

private:
    void setDays(const std::set<int>& days);
    void refresh();

    KeepAwakeSchedule original_;
    QLineEdit* name_;
    std::array<QCheckBox*, 7> days_{}; // indexed by weekday number − 1 (Sunday first)
    QTimeEdit* start_;
    QTimeEdit* end_;
    QLabel* note_;
    QDialogButtonBox* buttons_;
};

} // namespace tarvik
