#include "app/awake/keep_awake_screen.h"

#include "app/awake/keyboard_lock.h"
#include "app/awake/schedule_editor.h"
#include "app/shell/card.h"
#include "app/shell/quiet_label.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"
#include "core/sys/permission_probe.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {

namespace {

QLabel* note(QWidget* parent, const QString& name = {}) {
    QLabel* l = quietLabel(QString(), parent);
    l->setObjectName(name);
    return l;
}

QLabel* warning(QWidget* parent, const QString& name) {
    auto* l = new QLabel(parent);
    l->setWordWrap(true);
    l->setObjectName(name);
    setTextMeaning(l, Meaning::Critical);
    l->hide();
    return l;
}

void showMessage(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

} // namespace

KeepAwakeScreen::KeepAwakeScreen(KeepAwakeController& controller, KeyboardLock& lock,
                                 QWidget* parent)
    : QWidget(parent), controller_(controller), lock_(lock) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(
        new ScreenHeader(tr("Keep Awake"), sectionSubtitle(AppSection::KeepAwake), this));

    auto* now = new Card(this);
    now->setObjectName(QStringLiteral("awakeNow"));
    QBoxLayout* nowLayout = now->body();
    auto* top = new QHBoxLayout();
    toggle_ = new QPushButton(this);
    toggle_->setObjectName(QStringLiteral("awakeToggle"));
    toggle_->setCheckable(true);
    toggle_->setMinimumSize(160, 56);
    QFont big = toggle_->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    toggle_->setFont(big);
    duration_ = new QComboBox(this);
    duration_->setObjectName(QStringLiteral("awakeDuration"));
    for (auto d : kManualDurations) {
        duration_->addItem(label(d), minutes(d));
    }
    duration_->addItem(indefiniteText(), 0);
    duration_->setCurrentIndex(1); // an hour
    auto* forLabel = new QLabel(tr("&For:"), this);
    forLabel->setBuddy(duration_);
    top->addWidget(toggle_);
    top->addWidget(forLabel);
    top->addWidget(duration_);
    top->addStretch(1);
    nowLayout->addLayout(top);

    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("awakeStatus"));
    setTextStyle(status_, TextStyle::Heading);
    reason_ = note(this, QStringLiteral("awakeReason"));
    error_ = warning(this, QStringLiteral("awakeError"));
    nowLayout->addWidget(status_);
    nowLayout->addWidget(reason_);
    nowLayout->addWidget(error_);

    lid_ = new QCheckBox(awake_text::lidOption(), this);
    lid_->setObjectName(QStringLiteral("lidOption"));
    lidDescription_ = note(this, QStringLiteral("lidDescription"));
    lidError_ = warning(this, QStringLiteral("lidError"));
    nowLayout->addWidget(lid_);
    nowLayout->addWidget(lidDescription_);
    nowLayout->addWidget(lidError_);
    layout->addWidget(now);

    auto* scheduleBox = new Card(tr("Schedules"), this, "clock");
    QBoxLayout* scheduleLayout = scheduleBox->body();
    auto* scheduleNote = note(scheduleBox);
    scheduleNote->setText(
        tr("Keep awake automatically in weekly windows, like 9:00 to 17:00 on weekdays."));
    scheduleLayout->addWidget(scheduleNote);
    schedules_ = new QTreeWidget(scheduleBox);
    schedules_->setObjectName(QStringLiteral("scheduleList"));
    schedules_->setHeaderLabels({tr("Name"), tr("Days"), tr("Time")});
    schedules_->setRootIsDecorated(false);
    schedules_->header()->setStretchLastSection(true);
    schedules_->setMinimumHeight(90);
    schedules_->setMaximumHeight(160);
    scheduleLayout->addWidget(schedules_);
    noSchedules_ = note(scheduleBox, QStringLiteral("noSchedules"));
    noSchedules_->setText(tr("No schedules yet: add one and Tarvik keeps the computer awake in "
                             "its window every week."));
    scheduleLayout->addWidget(noSchedules_);
    schedulesError_ = warning(scheduleBox, QStringLiteral("schedulesError"));
    scheduleLayout->addWidget(schedulesError_);
    auto* scheduleButtons = new QHBoxLayout();
    auto* add = new QPushButton(tr("&Add Schedule…"), scheduleBox);
    add->setObjectName(QStringLiteral("addSchedule"));
    edit_ = new QPushButton(tr("&Edit…"), scheduleBox);
    edit_->setObjectName(QStringLiteral("editSchedule"));
    remove_ = new QPushButton(tr("&Remove"), scheduleBox);
    remove_->setObjectName(QStringLiteral("removeSchedule"));
    scheduleButtons->addWidget(add);
    scheduleButtons->addWidget(edit_);
    scheduleButtons->addWidget(remove_);
    scheduleButtons->addStretch(1);
    scheduleLayout->addLayout(scheduleButtons);
    layout->addWidget(scheduleBox);

    auto* keyboardBox = new Card(awake_text::keyboardCleaning(), this);
    QBoxLayout* keyboardLayout = keyboardBox->body();
    auto* keyboardNote = note(keyboardBox);
    keyboardNote->setText(awake_text::keyboardCleaningDetail() + QStringLiteral(". ") +
                          awake_text::keyboardMenuText(kEscapesToUnlock));
    keyboardLayout->addWidget(keyboardNote);
    lockButton_ = new QPushButton(tr("&Lock Keyboard"), keyboardBox);
    lockButton_->setObjectName(QStringLiteral("lockKeyboard"));
    auto* lockRow = new QHBoxLayout();
    lockRow->addWidget(lockButton_);
    lockRow->addStretch(1);
    keyboardLayout->addLayout(lockRow);
    if (!lock_.mayHoldDevices()) {
        auto* access = note(keyboardBox, QStringLiteral("keyboardAccess"));
        access->setText(awake_text::shortcutsMayStillWork());
        keyboardLayout->addWidget(access);
    }
    lockFailure_ = warning(keyboardBox, QStringLiteral("lockFailure"));
    keyboardLayout->addWidget(lockFailure_);
    openAccessibility_ = new QPushButton(awake_text::openAccessibilitySettings(), keyboardBox);
    openAccessibility_->setObjectName(QStringLiteral("openAccessibilitySettings"));
    openAccessibility_->hide();
    auto* accessibilityRow = new QHBoxLayout();
    accessibilityRow->addWidget(openAccessibility_);
    accessibilityRow->addStretch(1);
    keyboardLayout->addLayout(accessibilityRow);
    accessibilityHelp_ = note(keyboardBox, QStringLiteral("accessibilityHelp"));
    accessibilityHelp_->hide();
    keyboardLayout->addWidget(accessibilityHelp_);
    layout->addWidget(keyboardBox);

    auto* footer = note(this);
    footer->setText(awake_text::worksWhileRunning());
    layout->addWidget(footer);
    layout->addStretch(1);

    connect(toggle_, &QPushButton::clicked, this, [this](bool on) {
        if (!on) {
            controller_.turnOff();
            return;
        }
        const int m = duration_->currentData().toInt();
        if (m == 0) {
            controller_.startManual(ManualSession::indefinite());
        } else {
            controller_.startManual(static_cast<ManualSession::Duration>(m));
        }
    });
    connect(lid_, &QCheckBox::toggled, this, [this](bool on) {
        if (!filling_) {
            controller_.chooseKeepsRunningWithLidClosed(on);
        }
    });
    connect(add, &QPushButton::clicked, this, [this] { editSchedule(-1); });
    connect(edit_, &QPushButton::clicked, this,
            [this] { editSchedule(schedules_->currentIndex().row()); });
    connect(schedules_, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* item) { editSchedule(schedules_->indexOfTopLevelItem(item)); });
    connect(remove_, &QPushButton::clicked, this, [this] {
        const int row = schedules_->currentIndex().row();
        if (row >= 0 && row < static_cast<int>(controller_.schedules().size())) {
            controller_.removeSchedule(controller_.schedules()[row].id);
        }
    });
    connect(schedules_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int) {
        const int row = schedules_->indexOfTopLevelItem(item);
        if (filling_ || row < 0 || row >= static_cast<int>(controller_.schedules().size())) {
            return;
        }
        KeepAwakeSchedule s = controller_.schedules()[row];
        s.isEnabled = item->checkState(0) == Qt::Checked;
        if (s.isEnabled != controller_.schedules()[row].isEnabled) {
            controller_.saveSchedule(s);
        }
    });
    connect(schedules_, &QTreeWidget::currentItemChanged, this, &KeepAwakeScreen::refresh);
    connect(lockButton_, &QPushButton::clicked, this, [this] {
        showMessage(lockFailure_, {});
        showMessage(accessibilityHelp_, {});
        openAccessibility_->hide();
        lock_.begin();
    });
    connect(&lock_, &KeyboardLock::failed, this, [this](const QString& title, const QString& why) {
        showMessage(
            lockFailure_,
            QStringLiteral("<b>%1</b><br>%2").arg(title.toHtmlEscaped(), why.toHtmlEscaped()));
        openAccessibility_->show();
        lockButton_->setText(tr("Try &Again"));
    });
    connect(openAccessibility_, &QPushButton::clicked, this, [this] {
        // Where no settings panel can grant it, this is what to do instead.
        showMessage(accessibilityHelp_,
                    PermissionProbe().openSettings(AppPermission::Accessibility));
    });
    connect(&lock_, &KeyboardLock::lockedChanged, this, [this](bool locked) {
        if (!locked) {
            lockButton_->setText(tr("&Lock Keyboard"));
        }
    });
    connect(&controller_, &KeepAwakeController::changed, this, [this] {
        // Queued: a change can come from a check box in the list, inside its own itemChanged,
        // and rebuilding the list then would delete the item Qt is still notifying about.
        QMetaObject::invokeMethod(this, &KeepAwakeScreen::refreshSchedules, Qt::QueuedConnection);
        refresh();
    });
    refreshSchedules();
    refresh();
}

void KeepAwakeScreen::refresh() {
    const KeepAwakeState state = controller_.state();
    filling_ = true;
    toggle_->setChecked(state.isActive);
    toggle_->setText(state.isActive ? tr("On") : tr("Off"));
    toggle_->setToolTip(state.isActive ? tr("Stop keeping awake") : tr("Keep awake now"));
    status_->setText(awake_text::status(state, controller_.now()));
    reason_->setText(state.isActive ? awake_text::reason(state) : awake_text::followsOwnSettings());
    showMessage(error_, controller_.error());
    const bool lidOn = controller_.keepsRunningWithLidClosed();
    lid_->setChecked(lidOn);
    lidDescription_->setText(lidOn ? awake_text::lidOnDescription() : awake_text::lidDescription());
    showMessage(lidError_, controller_.lidError());
    showMessage(schedulesError_, controller_.schedulesError());
    const bool chosen = schedules_->currentIndex().isValid();
    edit_->setEnabled(chosen);
    remove_->setEnabled(chosen);
    filling_ = false;
}

void KeepAwakeScreen::refreshSchedules() {
    filling_ = true;
    const int current = schedules_->currentIndex().row();
    schedules_->clear();
    for (const auto& s : controller_.schedules()) {
        QString time =
            minutesText(s.startMinutes) + QStringLiteral("–") + minutesText(s.endMinutes);
        if (s.endsNextDay()) {
            time += QStringLiteral("  ") + endsNextDayText();
        }
        if (!s.isValid()) {
            time += QStringLiteral("  ") + tr("(never opens: check its days and times)");
        }
        auto* item =
            new QTreeWidgetItem(schedules_, {s.displayName(), weekdaysText(s.weekdays), time});
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, s.isEnabled ? Qt::Checked : Qt::Unchecked);
    }
    schedules_->resizeColumnToContents(0);
    schedules_->resizeColumnToContents(1);
    // An empty table says nothing; a sentence says what the list is for.
    const bool none = controller_.schedules().empty();
    schedules_->setVisible(!none);
    noSchedules_->setVisible(none);
    edit_->setVisible(!none);
    remove_->setVisible(!none);
    if (current >= 0 && current < schedules_->topLevelItemCount()) {
        schedules_->setCurrentItem(schedules_->topLevelItem(current));
    }
    filling_ = false;
}

void KeepAwakeScreen::editSchedule(int row) {
    const bool adding = row < 0 || row >= static_cast<int>(controller_.schedules().size());
    KeepAwakeSchedule start;
    if (adding) {
        start.weekdays = KeepAwakeSchedule::weekdaysPreset();
    } else {
        start = controller_.schedules()[row];
    }
    auto* editor = new ScheduleEditor(start, this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    connect(editor, &QDialog::accepted, this,
            [this, editor] { controller_.saveSchedule(editor->schedule()); });
    editor->open();
}

} // namespace tarvik
