#pragma once

#include "core/awake/keep_awake_evaluator.h"
#include "core/sys/logind.h"
#include "core/sys/screen_saver_inhibit.h"

#include <QDBusConnection>
#include <QObject>
#include <QTimer>
#include <functional>

namespace tarvik {

class Preferences;

struct KeepAwakeBuses {
    QDBusConnection system = QDBusConnection::systemBus();
    QDBusConnection session = QDBusConnection::sessionBus();
};

// Keeps the computer awake while the evaluator says so: one logind "idle:sleep" inhibitor plus
// the desktop's idle inhibit, taken when keeping awake starts and dropped when it stops or the
// controller goes away. With the lid option on it also holds a "handle-lid-switch" inhibitor;
// when that ends with the lid already shut (keeping awake stops, or Tarvik exits), it asks
// logind to suspend, so a closed laptop is not left running in a bag.
class KeepAwakeController : public QObject {
    Q_OBJECT
public:
    using Clock = std::function<QDateTime()>;

    explicit KeepAwakeController(Preferences& preferences, KeepAwakeBuses buses = {},
                                 Clock clock = {}, QObject* parent = nullptr);
    ~KeepAwakeController() override;

    const std::vector<KeepAwakeSchedule>& schedules() const { return schedules_; }
    // Why the stored schedules were left out, when they could not be read.
    const QString& schedulesError() const { return schedulesError_; }
    // Adds `schedule`, or replaces the one with its id; stores the list.
    void saveSchedule(const KeepAwakeSchedule& schedule);
    void removeSchedule(const QUuid& id);

    const std::optional<ManualSession>& manual() const { return manual_; }
    void startManual(const ManualSession& session);
    void startManual(ManualSession::Duration duration);
    // Stops keeping awake now: ends the manual session and skips a schedule window that is
    // open, until it closes.
    void turnOff();

    const KeepAwakeState& state() const { return state_; }
    const QDateTime& now() const { return now_; }
    bool isAssertionHeld() const { return sleepLock_.isHeld(); }

    bool keepsRunningWithLidClosed() const;
    void setKeepsRunningWithLidClosed(bool on);
    bool lidSleepOverridden() const { return lidLock_.isHeld(); }
    std::optional<bool> declinedLidTarget() const { return declinedLidTarget_; }

    // Why keeping awake could not be applied, in the user's words; empty when it was.
    const QString& error() const { return error_; }
    const QString& lidError() const { return lidError_; }

    void evaluate();

signals:
    void changed();

private:
    void loadSchedules();
    void storeSchedules();
    void apply();
    void applyLid(bool target);
    void releaseAll();
    void armTimer();

    Preferences& preferences_;
    Logind logind_;
    ScreenSaverInhibit screenSaver_;
    Clock clock_;
    std::vector<KeepAwakeSchedule> schedules_;
    QString schedulesError_;
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
