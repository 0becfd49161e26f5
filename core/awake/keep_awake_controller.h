#pragma once

#include "core/awake/keep_awake_evaluator.h"
#include "core/sys/bus_pair.h"
#include "core/sys/logind.h"
#include "core/sys/screen_saver_inhibit.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace tarvik {

using KeepAwakeBuses = BusPair;

// Keeps the computer awake while the evaluator says so: one logind "idle:sleep" inhibitor plus
// the desktop's idle inhibit, taken when keeping awake starts and dropped when it stops or the
// controller goes away. With the lid option on it also holds a "handle-lid-switch" inhibitor;
// when that ends with the lid already shut (keeping awake stops, or Tarvik exits), it asks
// logind to suspend, so a closed laptop is not left running in a bag.
//
// It keeps no settings: the schedules and the lid option are given to it (and again whenever they
// change), and what the person edits is announced for the caller to keep.
class KeepAwakeController : public QObject {
    Q_OBJECT
public:
    using Clock = std::function<QDateTime()>;

    explicit KeepAwakeController(KeepAwakeBuses buses = {}, Clock clock = {},
                                 QObject* parent = nullptr);
    ~KeepAwakeController() override;

    const std::vector<KeepAwakeSchedule>& schedules() const { return schedules_; }
    // Why the stored schedules were left out, when they could not be read.
    const QString& schedulesError() const { return schedulesError_; }
    // The schedules as stored, or why they could not be read (then there are none).
    void setSchedules(std::vector<KeepAwakeSchedule> schedules, QString error = {});
    // Adds `schedule`, or replaces the one with its id, and announces the new list.
    void saveSchedule(const KeepAwakeSchedule& schedule);
    void removeSchedule(const QUuid& id);

    const std::optional<ManualSession>& manual() const { return manual_; }
    void startManual(const ManualSession& session);
    void startManual(ManualSession::Duration duration);
    // Stops keeping awake now: ends the manual session and skips a schedule window that is
    // open, until it closes.
    void turnOff();

    // What is in force: keeping awake only while the lock on sleep is really held, so no view
    // says "On" when the lock was refused or logind is missing (error() says why).
    KeepAwakeState state() const {
        return sleepLock_.isHeld() ? state_ : KeepAwakeState::inactive();
    }
    const QDateTime& now() const { return now_; }
    bool isAssertionHeld() const { return sleepLock_.isHeld(); }

    bool keepsRunningWithLidClosed() const { return lidClosed_; }
    // The lid option as stored: applied at once.
    void setKeepsRunningWithLidClosed(bool on);
    // The person's choice: announced (lidOptionEdited) and applied.
    void chooseKeepsRunningWithLidClosed(bool on);
    bool lidSleepOverridden() const { return lidLock_.isHeld(); }
    std::optional<bool> declinedLidTarget() const { return declinedLidTarget_; }

    // Why keeping awake could not be applied, in the user's words; empty when it was.
    const QString& error() const { return error_; }
    const QString& lidError() const { return lidError_; }

    void evaluate();
    // Lets go of every lock at once, as Tarvik quits (going away does it too).
    void releaseAll();

signals:
    void changed();
    // What the person edited, for the caller to keep.
    void schedulesEdited(const std::vector<KeepAwakeSchedule>& schedules);
    void lidOptionEdited(bool on);

private:
    void apply();
    void applyLid(bool target);
    void armTimer();

    Logind logind_;
    ScreenSaverInhibit screenSaver_;
    Clock clock_;
    std::vector<KeepAwakeSchedule> schedules_;
    QString schedulesError_;
    bool lidClosed_ = false;
    std::optional<ManualSession> manual_;
    std::optional<QDateTime> skipWindowUntil_;
    KeepAwakeState state_;
    QDateTime now_;
    Logind::Lock sleepLock_;
    Logind::Lock lidLock_;
    std::optional<bool> declinedLidTarget_;
    QString error_;
    QString lidError_;
    QTimer timer_;
};

} // namespace tarvik
