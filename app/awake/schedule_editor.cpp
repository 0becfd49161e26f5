#include "app/awake/schedule_editor.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimeEdit>

namespace tarvik {

namespace {

QTime timeOf(int minutes) {
    return QTime(minutes / 60, minutes % 60);
}

int minutesOf(const QTime& t) {
    return t.hour() * 60 + t.minute();
}

} // namespace

ScheduleEditor::ScheduleEditor(const KeepAwakeSchedule& schedule, QWidget* parent)
    : QDialog(parent), original_(schedule) {
    setWindowTitle(tr("Keep-Awake Schedule"));
    auto* form = new QFormLayout(this);
    name_ = new QLineEdit(schedule.name, this);
    name_->setPlaceholderText(tr("Schedule"));
    form->addRow(tr("&Name:"), name_);

    auto* dayRow = new QHBoxLayout();
    static const char* const names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    for (int d = 1; d <= 7; ++d) {
        days_[d - 1] = new QCheckBox(tr(names[d - 1]), this);
        days_[d - 1]->setObjectName(QStringLiteral("day%1").arg(d));
        connect(days_[d - 1], &QCheckBox::toggled, this, &ScheduleEditor::refresh);
    }
    for (int d : {2, 3, 4, 5, 6, 7, 1}) { // the week as most people read it, Monday first
        dayRow->addWidget(days_[d - 1]);
    }
    form->addRow(tr("Days:"), dayRow);
    auto* presets = new QHBoxLayout();
    auto* weekdays = new QPushButton(tr("&Weekdays"), this);
    auto* everyDay = new QPushButton(tr("&Every Day"), this);
    connect(weekdays, &QPushButton::clicked, this,
            [this] { setDays(KeepAwakeSchedule::weekdaysPreset()); });
    connect(everyDay, &QPushButton::clicked, this,
            [this] { setDays(KeepAwakeSchedule::everyDay()); });
    presets->addWidget(weekdays);
    presets->addWidget(everyDay);
    presets->addStretch(1);
    form->addRow(QString(), presets);

    start_ = new QTimeEdit(timeOf(schedule.startMinutes), this);
    end_ = new QTimeEdit(timeOf(schedule.endMinutes), this);
    for (QTimeEdit* t : {start_, end_}) {
        t->setDisplayFormat(QStringLiteral("HH:mm"));
        connect(t, &QTimeEdit::timeChanged, this, &ScheduleEditor::refresh);
    }
    start_->setObjectName(QStringLiteral("startTime"));
    end_->setObjectName(QStringLiteral("endTime"));
    form->addRow(tr("&Start:"), start_);
    form->addRow(tr("E&nd:"), end_);
    note_ = new QLabel(this);
    note_->setObjectName(QStringLiteral("scheduleNote"));
    form->addRow(QString(), note_);

    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons_);
    setDays(schedule.weekdays);
}

void ScheduleEditor::setDays(const std::set<int>& days) {
    for (int d = 1; d <= 7; ++d) {
        days_[d - 1]->setChecked(days.contains(d));
    }
    refresh();
}

KeepAwakeSchedule ScheduleEditor::schedule() const {
    KeepAwakeSchedule s = original_;
    s.name = name_->text();
    s.weekdays.clear();
    for (int d = 1; d <= 7; ++d) {
        if (days_[d - 1]->isChecked()) {
            s.weekdays.insert(d);
        }
    }
    s.startMinutes = minutesOf(start_->time());
    s.endMinutes = minutesOf(end_->time());
    return s;
}

void ScheduleEditor::refresh() {
    const KeepAwakeSchedule s = schedule();
    QString note;
    if (s.startMinutes == s.endMinutes) {
        note = startEqualsEndText();
    } else if (s.weekdays.empty()) {
        note = tr("Choose at least one day.");
    } else if (s.endsNextDay()) {
        note = endsNextDayText();
    }
    note_->setText(note);
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(s.isValid());
}

} // namespace tarvik
