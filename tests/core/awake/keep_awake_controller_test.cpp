#include "core/awake/keep_awake_controller.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "tests/support/private_bus.h"
#include "tests/support/temp_home.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::PrivateBus;
using tarvik::test::TempHome;

namespace {

const QString kLogind = "org.freedesktop.login1";
const QString kLogindPath = "/org/freedesktop/login1";
const QString kMock = "org.freedesktop.DBus.Mock";

struct Inhibitor {
    QString what, who, why, mode;
    bool operator==(const Inhibitor&) const = default;
};

// A private bus with a mock logind (python3-dbusmock's template) and a mock screen saver,
// both logging the calls they receive.
class KeepAwakeOnBus : public ::testing::Test {
protected:
    void SetUp() override {
        if (!bus_.isRunning() || !PrivateBus::hasDbusMock()) {
            GTEST_SKIP() << "needs dbus-daemon and python3-dbusmock";
        }
        ASSERT_TRUE(bus_.startMock(kLogind, {"--template", "logind", "-l", log("logind")}));
        ASSERT_TRUE(
            bus_.startMock("org.freedesktop.ScreenSaver",
                           {"-l", log("screensaver"), "org.freedesktop.ScreenSaver",
                            "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"}));
        mockCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "AddMethod",
                 {"", "Inhibit", "ss", "u", "ret = 7"});
        mockCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "AddMethod",
                 {"", "UnInhibit", "u", "", ""});
        prefs_ = std::make_unique<Preferences>(home_.path() + "/Tarvik.conf");
    }

    QString log(const QString& name) { return logs_.filePath(name + ".log"); }
    QString calls(const QString& name) {
        QFile f(log(name));
        f.open(QIODevice::ReadOnly);
        return QString::fromUtf8(f.readAll());
    }

    void mockCall(const QString& service, const QString& path, const QString& method,
                  const QVariantList& args) {
        const QDBusMessage reply = bus_.call(service, path, kMock, method, args);
        ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }

    // A controller told the stored settings, whose edits are stored, as the window wires it.
    std::unique_ptr<KeepAwakeController> controller() {
        auto c = std::make_unique<KeepAwakeController>(
            KeepAwakeBuses{bus_.connection(), bus_.connection()}, [this] { return now_; });
        auto stored = CapabilitySettings::schedules(*prefs_);
        c->setSchedules(std::move(stored.schedules), stored.error);
        c->setKeepsRunningWithLidClosed(prefs_->value(pref::kKeepAwakeLidClosed).toBool());
        QObject::connect(c.get(), &KeepAwakeController::schedulesEdited,
                         [this](const std::vector<KeepAwakeSchedule>& schedules) {
                             CapabilitySettings::storeSchedules(*prefs_, schedules);
                         });
        return c;
    }

    std::vector<Inhibitor> inhibitors() {
        const QDBusMessage reply =
            bus_.call(kLogind, kLogindPath, "org.freedesktop.login1.Manager", "ListInhibitors");
        std::vector<Inhibitor> out;
        const auto arg = reply.arguments().value(0).value<QDBusArgument>();
        arg.beginArray();
        while (!arg.atEnd()) {
            Inhibitor i;
            uint uid = 0, pid = 0;
            arg.beginStructure();
            arg >> i.what >> i.who >> i.why >> i.mode >> uid >> pid;
            arg.endStructure();
            out.push_back(i);
        }
        arg.endArray();
        return out;
    }

    // logind drops a lock when it sees the descriptor close, a moment after we close it.
    std::vector<Inhibitor> inhibitorsSettled(std::size_t expected) {
        std::vector<Inhibitor> now = inhibitors();
        for (int i = 0; i < 100 && now.size() != expected; ++i) {
            QThread::msleep(20);
            now = inhibitors();
        }
        return now;
    }

    PrivateBus bus_;
    QTemporaryDir logs_;
    TempHome home_;
    std::unique_ptr<Preferences> prefs_;
    QDateTime now_{QDate(2026, 3, 9), QTime(12, 0)}; // a Monday
};

const Inhibitor kSleep{"idle:sleep", "Tarvik", "Tarvik Keep Awake", "block"};
const Inhibitor kLid{"handle-lid-switch", "Tarvik", "Tarvik Keep Awake", "block"};

} // namespace

TEST_F(KeepAwakeOnBus, ManualSessionHoldsOneLockUntilItEnds) {
    auto c = controller();
    EXPECT_FALSE(c->state().isActive);
    EXPECT_TRUE(inhibitors().empty());

    c->startManual(ManualSession::Duration::QuarterHour);
    ASSERT_TRUE(c->state().isActive);
    EXPECT_TRUE(c->error().isEmpty()) << c->error().toStdString();
    EXPECT_EQ(inhibitors(), (std::vector{kSleep}));
    EXPECT_TRUE(calls("screensaver").contains("Inhibit \"Tarvik\" \"Tarvik Keep Awake\""));

    // Evaluating again while active takes no second lock.
    now_ = now_.addSecs(600);
    c->evaluate();
    c->startManual(ManualSession::Duration::QuarterHour);
    EXPECT_EQ(inhibitors(), (std::vector{kSleep}));

    now_ = now_.addSecs(15 * 60);
    c->evaluate();
    EXPECT_FALSE(c->state().isActive);
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    EXPECT_TRUE(calls("screensaver").contains("UnInhibit 7"));
}

TEST_F(KeepAwakeOnBus, SchedulesTakeTheLockInTheirWindowAndTurningOffSkipsIt) {
    auto c = controller();
    KeepAwakeSchedule work;
    work.name = "Work";
    work.weekdays = KeepAwakeSchedule::weekdaysPreset();
    work.startMinutes = 13 * 60;
    work.endMinutes = 14 * 60;
    c->saveSchedule(work);
    EXPECT_FALSE(c->state().isActive);

    now_ = QDateTime(QDate(2026, 3, 9), QTime(13, 0));
    c->evaluate();
    ASSERT_TRUE(c->state().isActive);
    EXPECT_EQ(c->state().schedule->name, "Work");
    EXPECT_EQ(inhibitors(), (std::vector{kSleep}));

    // Turning off in the window keeps the schedule but sleeps normally until the window ends.
    c->turnOff();
    EXPECT_FALSE(c->state().isActive);
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    EXPECT_EQ(c->schedules().size(), 1u);

    now_ = QDateTime(QDate(2026, 3, 10), QTime(13, 30));
    c->evaluate();
    EXPECT_TRUE(c->state().isActive); // the next day's window applies again
    EXPECT_EQ(inhibitors(), (std::vector{kSleep}));
    now_ = QDateTime(QDate(2026, 3, 10), QTime(14, 0));
    c->evaluate();
    EXPECT_FALSE(c->state().isActive); // the window closed by itself
    EXPECT_TRUE(inhibitorsSettled(0).empty());

    now_ = QDateTime(QDate(2026, 3, 11), QTime(13, 30));
    c->evaluate();

    // A second controller reads the stored schedule; the first one's exit releases its lock.
    c.reset();
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    auto again = controller();
    EXPECT_TRUE(again->state().isActive);
    EXPECT_EQ(inhibitors(), (std::vector{kSleep}));
}

TEST_F(KeepAwakeOnBus, DamagedStoredSchedulesMeanNoneAndSaySo) {
    prefs_->setValue(pref::kKeepAwakeSchedules, "[{\"id\": 12");
    auto c = controller();
    EXPECT_TRUE(c->schedules().empty());
    EXPECT_TRUE(c->schedulesError().contains("couldn't be read"));
    EXPECT_FALSE(c->state().isActive);
}

TEST_F(KeepAwakeOnBus, TheLidLockFollowsTheOptionAndAShutLidSuspendsAtTheEnd) {
    mockCall(kLogind, kLogindPath, "AddProperty",
             {"org.freedesktop.login1.Manager", "LidClosed", QVariant::fromValue(false)});
    auto c = controller();
    c->setKeepsRunningWithLidClosed(true);
    EXPECT_TRUE(inhibitors().empty()); // the option alone holds nothing
    c->startManual(ManualSession::indefinite());
    EXPECT_EQ(inhibitors(), (std::vector{kSleep, kLid}));
    EXPECT_TRUE(c->lidSleepOverridden());

    c->setKeepsRunningWithLidClosed(false);
    EXPECT_EQ(inhibitorsSettled(1), (std::vector{kSleep}));
    c->setKeepsRunningWithLidClosed(true);
    EXPECT_EQ(inhibitors(), (std::vector{kSleep, kLid}));

    // The lid is shut while kept awake; when keeping awake ends, the laptop is suspended.
    const QDBusMessage shut = bus_.call(
        kLogind, kLogindPath, "org.freedesktop.DBus.Properties", "Set",
        {"org.freedesktop.login1.Manager", "LidClosed", QVariant::fromValue(QDBusVariant(true))});
    ASSERT_EQ(shut.type(), QDBusMessage::ReplyMessage) << shut.errorMessage().toStdString();
    EXPECT_FALSE(calls("logind").contains("Suspend"));
    c->turnOff();
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    EXPECT_TRUE(calls("logind").contains("Suspend False"));
}

TEST_F(KeepAwakeOnBus, RefusedLocksAreReportedAndTheLidIsNotAskedForAgain) {
    // This logind refuses every lock, as polkit does for a user outside the active session.
    mockCall(kLogind, kLogindPath, "AddMethod",
             {"org.freedesktop.login1.Manager", "Inhibit", "ssss", "h",
              "raise dbus.exceptions.DBusException('Access denied', "
              "name='org.freedesktop.DBus.Error.AccessDenied')"});
    auto c = controller();
    c->setKeepsRunningWithLidClosed(true);
    c->startManual(ManualSession::indefinite());
    EXPECT_FALSE(c->state().isActive); // refused: nothing is in force, and the error says why
    EXPECT_FALSE(c->isAssertionHeld());
    EXPECT_TRUE(c->error().startsWith("Couldn't keep the computer awake: Access denied"));
    EXPECT_EQ(c->lidError(), "Needs your administrator password, which wasn't given");
    EXPECT_EQ(c->declinedLidTarget(), true);

    const auto lidAsks = [&] {
        return calls("logind").count("\"handle-lid-switch\"");
    };
    const auto asked = lidAsks();
    EXPECT_EQ(asked, 1);
    c->evaluate();
    c->evaluate();
    EXPECT_EQ(lidAsks(), asked);
    EXPECT_GE(calls("logind").count("\"idle:sleep\""), 3); // the sleep lock is retried

    // Turning the option on again is a new request.
    c->setKeepsRunningWithLidClosed(false);
    c->setKeepsRunningWithLidClosed(true);
    EXPECT_EQ(lidAsks(), asked + 1);

    // Once keeping awake stops, neither failure is shown any more.
    c->turnOff();
    EXPECT_EQ(c->error(), "");
    EXPECT_EQ(c->lidError(), "");
}

TEST_F(KeepAwakeOnBus, PolkitRefusingTheLidLockAsksForThePassword) {
    mockCall(kLogind, kLogindPath, "AddMethod",
             {"org.freedesktop.login1.Manager", "Inhibit", "ssss", "h",
              "raise dbus.exceptions.DBusException('Not authorized', "
              "name='org.freedesktop.PolicyKit1.Error.NotAuthorized')"});
    auto c = controller();
    c->setKeepsRunningWithLidClosed(true);
    c->startManual(ManualSession::indefinite());
    EXPECT_EQ(c->lidError(), "Needs your administrator password, which wasn't given");
    EXPECT_EQ(c->declinedLidTarget(), true);
}

TEST_F(KeepAwakeOnBus, WithoutLogindTheLidFailureSaysSoAndIsNotTakenForARefusal) {
    PrivateBus empty; // a bus on which logind never started
    ASSERT_TRUE(empty.isRunning());
    KeepAwakeController c(KeepAwakeBuses{empty.connection(), empty.connection()},
                          [this] { return now_; });
    c.setKeepsRunningWithLidClosed(true);
    c.startManual(ManualSession::indefinite());
    EXPECT_EQ(c.error(), "Couldn't keep the computer awake: systemd-logind is not running");
    EXPECT_EQ(c.lidError(),
              "Couldn't keep the computer running with the lid closed: systemd-logind is not "
              "running");
    EXPECT_FALSE(c.declinedLidTarget().has_value());
    c.turnOff();
    EXPECT_EQ(c.lidError(), "");
}

TEST_F(KeepAwakeOnBus, ExitingWhileKeepingAwakeWithTheLidShutSuspends) {
    mockCall(kLogind, kLogindPath, "AddProperty",
             {"org.freedesktop.login1.Manager", "LidClosed", QVariant::fromValue(false)});
    prefs_->setValue(pref::kKeepAwakeLidClosed, true);

    // With the lid open, exiting only lets go of the locks.
    auto c = controller();
    c->startManual(ManualSession::indefinite());
    ASSERT_TRUE(c->lidSleepOverridden());
    c.reset();
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    EXPECT_FALSE(calls("logind").contains("Suspend"));

    c = controller();
    c->startManual(ManualSession::indefinite());
    ASSERT_TRUE(c->lidSleepOverridden());
    const QDBusMessage shut = bus_.call(
        kLogind, kLogindPath, "org.freedesktop.DBus.Properties", "Set",
        {"org.freedesktop.login1.Manager", "LidClosed", QVariant::fromValue(QDBusVariant(true))});
    ASSERT_EQ(shut.type(), QDBusMessage::ReplyMessage) << shut.errorMessage().toStdString();
    c.reset();
    EXPECT_TRUE(inhibitorsSettled(0).empty());
    EXPECT_TRUE(calls("logind").contains("Suspend False"));
}
