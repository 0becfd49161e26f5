#include "core/awake/keep_awake_evaluator.h"
#include "core/awake/keep_awake_schedule_store.h"
#include "core/awake/keep_awake_texts.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

const QTimeZone kBerlin("Europe/Berlin");

KeepAwakeSchedule schedule(std::set<int> days, int start, int end, QString name = {}) {
    KeepAwakeSchedule s;
    s.name = std::move(name);
    s.weekdays = std::move(days);
    s.startMinutes = start;
    s.endMinutes = end;
    return s;
}

QDateTime at(const QString& text) {
    return QDateTime(QDate::fromString(text.left(10), Qt::ISODate),
                     QTime::fromString(text.mid(11), "HH:mm"), kBerlin);
}

} // namespace

TEST(KeepAwakeSchedule, ValidityDurationAndNames) {
    const auto night = schedule({2}, 1320, 360);
    EXPECT_TRUE(night.isValid());
    EXPECT_EQ(night.durationMinutes(), 480);
    EXPECT_TRUE(night.endsNextDay());
    EXPECT_EQ(schedule({2}, 540, 1020).durationMinutes(), 480);
    EXPECT_FALSE(schedule({2}, 540, 1020).endsNextDay());

    EXPECT_FALSE(schedule({2}, 540, 540).isValid());
    EXPECT_FALSE(schedule({}, 540, 600).isValid());
    EXPECT_FALSE(schedule({0, 2}, 540, 600).isValid());
    EXPECT_FALSE(schedule({8}, 540, 600).isValid());
    EXPECT_FALSE(schedule({2}, 1440, 600).isValid());
    EXPECT_FALSE(schedule({2}, 540, -1).isValid());
    EXPECT_TRUE(schedule({1, 7}, 0, 1439).isValid());

    EXPECT_EQ(schedule({2}, 0, 1, "   ").displayName(), "Schedule");
    EXPECT_EQ(schedule({2}, 0, 1, " Work ").displayName(), " Work ");
    EXPECT_EQ(KeepAwakeSchedule::weekdaysPreset(), (std::set<int>{2, 3, 4, 5, 6}));
    EXPECT_EQ(weekdaysText(KeepAwakeSchedule::weekdaysPreset()), "Mon–Fri");
    EXPECT_EQ(weekdaysText({1, 7}), "Sat, Sun");
    EXPECT_EQ(minutesText(545), "09:05");
}

TEST(ManualSession, DurationsAndEnds) {
    const QDateTime start = at("2026-03-10 10:00");
    const auto two = ManualSession::starting(start, ManualSession::Duration::TwoHours);
    EXPECT_EQ(start.secsTo(*two.until), 7200);
    EXPECT_FALSE(two.hasEnded(start.addSecs(7199)));
    EXPECT_TRUE(two.hasEnded(start.addSecs(7200)));
    QStringList labels;
    for (auto d : kManualDurations) {
        labels << label(d);
    }
    EXPECT_EQ(labels, (QStringList{"15 min", "1 h", "2 h", "4 h", "8 h"}));
    EXPECT_EQ(seconds(ManualSession::Duration::QuarterHour), 900);
}

TEST(KeepAwakeEvaluator, WindowsOpenOnTheirDaysAndRunPastMidnight) {
    // 2026-03-09 is a Monday.
    const auto work = schedule(KeepAwakeSchedule::weekdaysPreset(), 540, 1020, "Work");
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(work, at("2026-03-09 08:59"), kBerlin),
              std::nullopt);
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(work, at("2026-03-09 09:00"), kBerlin),
              at("2026-03-09 17:00"));
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(work, at("2026-03-09 17:00"), kBerlin),
              std::nullopt);
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(work, at("2026-03-14 10:00"), kBerlin),
              std::nullopt); // Saturday

    // Friday night into Saturday: open on Saturday morning although Saturday is not listed,
    // and not on Monday morning, whose previous day (Sunday) is not listed either.
    const auto night = schedule({6}, 1320, 360, "Render");
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(night, at("2026-03-14 05:59"), kBerlin),
              at("2026-03-14 06:00"));
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(night, at("2026-03-13 21:59"), kBerlin),
              std::nullopt);
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(night, at("2026-03-16 01:00"), kBerlin),
              std::nullopt);

    // Several open windows: the earliest end wins and names its schedule.
    const auto state = KeepAwakeEvaluator::evaluate({night, work, schedule({7}, 0, 420, "Early")},
                                                    std::nullopt, at("2026-03-14 02:00"), kBerlin);
    ASSERT_TRUE(state.isActive);
    EXPECT_EQ(state.reason, KeepAwakeState::Reason::Schedule);
    EXPECT_EQ(state.schedule->name, "Render");
    EXPECT_EQ(state.until, at("2026-03-14 06:00"));

    // Disabled and invalid schedules never open.
    auto off = work;
    off.isEnabled = false;
    EXPECT_FALSE(KeepAwakeEvaluator::evaluate({off, schedule({2}, 600, 600)}, std::nullopt,
                                              at("2026-03-09 10:00"), kBerlin)
                     .isActive);
    EXPECT_EQ(KeepAwakeEvaluator::nextWindowStart({work}, at("2026-03-13 18:00"), kBerlin),
              at("2026-03-16 09:00"));
}

TEST(KeepAwakeEvaluator, ManualSessionsWinUntilTheyEnd) {
    const auto work = schedule(KeepAwakeSchedule::everyDay(), 540, 1020);
    const QDateTime noon = at("2026-03-09 12:00");
    const auto indefinite =
        KeepAwakeEvaluator::evaluate({work}, ManualSession::indefinite(), noon, kBerlin);
    EXPECT_EQ(indefinite, KeepAwakeState::manual(std::nullopt));
    EXPECT_EQ(awake_text::status(indefinite, noon), "Until you turn it off");

    const auto ended = ManualSession::endingAt(at("2026-03-09 11:00"));
    const auto state = KeepAwakeEvaluator::evaluate({work}, ended, noon, kBerlin);
    EXPECT_EQ(state.reason, KeepAwakeState::Reason::Schedule); // the schedule still applies
    EXPECT_FALSE(KeepAwakeEvaluator::evaluate({}, ended, noon, kBerlin).isActive);
    EXPECT_EQ(awake_text::status(KeepAwakeState::inactive(), noon), "Sleeping normally");
}

TEST(KeepAwakeEvaluator, WallClockWindowsSurviveClockChanges) {
    // Clocks in Berlin go forward at 02:00 on 2026-03-29 and back at 03:00 on 2026-10-25.
    const auto night = schedule(KeepAwakeSchedule::everyDay(), 1320, 360);
    const QDateTime springEnd = at("2026-03-29 06:00");
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(night, at("2026-03-29 01:30"), kBerlin), springEnd);
    EXPECT_EQ(at("2026-03-28 22:00").secsTo(springEnd), 7 * 3600); // an hour shorter
    const QDateTime autumnEnd = at("2026-10-25 06:00");
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(night, at("2026-10-25 05:30"), kBerlin), autumnEnd);
    EXPECT_EQ(at("2026-10-24 22:00").secsTo(autumnEnd), 9 * 3600);

    // The same instant read in another zone: the window follows the zone asked for.
    const auto work = schedule(KeepAwakeSchedule::everyDay(), 540, 1020);
    const QDateTime berlinNine = at("2026-06-01 09:30");
    EXPECT_TRUE(KeepAwakeEvaluator::openWindowEnd(work, berlinNine, kBerlin));
    EXPECT_FALSE(
        KeepAwakeEvaluator::openWindowEnd(work, berlinNine, QTimeZone("America/New_York")));
}

TEST(KeepAwakeEvaluator, WindowsStartingOrEndingInAnHourTheClocksSkipOrRepeatStayValid) {
    // On 2026-03-29 Berlin's clocks jump from 02:00 to 03:00: 02:30 does not happen that day.
    const auto fromGap = schedule(KeepAwakeSchedule::everyDay(), 150, 360);
    EXPECT_FALSE(KeepAwakeEvaluator::openWindowEnd(fromGap, at("2026-03-29 01:30"), kBerlin));
    const auto next =
        KeepAwakeEvaluator::nextWindowStart({fromGap}, at("2026-03-29 00:30"), kBerlin);
    ASSERT_TRUE(next && next->isValid());
    EXPECT_EQ(*next, at("2026-03-29 03:30"));
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(fromGap, at("2026-03-29 03:45"), kBerlin),
              at("2026-03-29 06:00"));

    const auto intoGap = schedule(KeepAwakeSchedule::everyDay(), 1320, 150);
    for (const char* when : {"2026-03-28 23:00", "2026-03-29 01:59"}) {
        const auto state = KeepAwakeEvaluator::evaluate({intoGap}, std::nullopt, at(when), kBerlin);
        ASSERT_TRUE(state.isActive) << when;
        ASSERT_TRUE(state.until && state.until->isValid()) << when;
        EXPECT_EQ(*state.until, at("2026-03-29 03:30")) << when;
        EXPECT_FALSE(awake_text::status(state, at(when)).startsWith(',')) << when;
    }
    EXPECT_FALSE(
        KeepAwakeEvaluator::evaluate({intoGap}, std::nullopt, at("2026-03-29 03:30"), kBerlin)
            .isActive);

    // On 2026-10-25 02:00 to 03:00 happens twice; the windows still open and close.
    const auto fromRepeat = schedule(KeepAwakeSchedule::everyDay(), 150, 360);
    const auto intoRepeat = schedule(KeepAwakeSchedule::everyDay(), 1320, 150);
    const auto opening =
        KeepAwakeEvaluator::nextWindowStart({fromRepeat}, at("2026-10-25 01:00"), kBerlin);
    ASSERT_TRUE(opening && opening->isValid());
    EXPECT_EQ(opening->time(), QTime(2, 30));
    const auto end = KeepAwakeEvaluator::openWindowEnd(intoRepeat, at("2026-10-25 01:00"), kBerlin);
    ASSERT_TRUE(end && end->isValid());
    EXPECT_EQ(end->toTimeZone(kBerlin).time(), QTime(2, 30));
    EXPECT_GT(*end, at("2026-10-25 01:00"));
}

TEST(KeepAwakeEvaluator, TheWeekWrapsFromSaturdayToSunday) {
    // 2026-03-14 is a Saturday, 2026-03-15 the Sunday after it.
    EXPECT_EQ(scheduleWeekday(QDate(2026, 3, 14)), 7);
    EXPECT_EQ(scheduleWeekday(QDate(2026, 3, 15)), 1);

    // Saturday night runs into Sunday morning, though Sunday is not listed.
    const auto saturdayNight = schedule({7}, 1320, 360);
    EXPECT_EQ(KeepAwakeEvaluator::openWindowEnd(saturdayNight, at("2026-03-15 03:00"), kBerlin),
              at("2026-03-15 06:00"));
    EXPECT_FALSE(KeepAwakeEvaluator::openWindowEnd(saturdayNight, at("2026-03-16 03:00"), kBerlin));

    // From Saturday evening the next windows are on Sunday and Monday of the next week.
    EXPECT_EQ(KeepAwakeEvaluator::nextWindowStart({schedule({1}, 540, 600)}, at("2026-03-14 20:00"),
                                                  kBerlin),
              at("2026-03-15 09:00"));
    EXPECT_EQ(KeepAwakeEvaluator::nextWindowStart({schedule({2}, 540, 600)}, at("2026-03-14 20:00"),
                                                  kBerlin),
              at("2026-03-16 09:00"));
    // A Sunday window seen from Sunday evening is a week away.
    EXPECT_EQ(KeepAwakeEvaluator::nextWindowStart({schedule({1}, 540, 600)}, at("2026-03-15 20:00"),
                                                  kBerlin),
              at("2026-03-22 09:00"));
}

TEST(KeepAwakeScheduleStore, RoundTripsAndReportsDamage) {
    auto a = schedule({1, 7}, 1320, 360, "Weekend nights");
    auto b = schedule({2}, 600, 600, "broken but kept");
    b.isEnabled = false;
    const auto decoded = KeepAwakeScheduleStore::decode(KeepAwakeScheduleStore::encode({a, b}));
    EXPECT_TRUE(decoded.error.isEmpty());
    EXPECT_EQ(decoded.schedules, (std::vector{a, b}));

    EXPECT_TRUE(KeepAwakeScheduleStore::decode("").schedules.empty());
    EXPECT_TRUE(KeepAwakeScheduleStore::decode("").error.isEmpty());
    for (const char* damaged : {"{not json", R"({"id":1})", R"([{"name":"x"}])",
                                R"([{"id":"6f1f3e1e-2a4b-4c4d-8e8f-0a1b2c3d4e5f","weekdays":[2],
                                     "startMinutes":"nine","endMinutes":600}])"}) {
        const auto d = KeepAwakeScheduleStore::decode(damaged);
        EXPECT_TRUE(d.schedules.empty()) << damaged;
        EXPECT_TRUE(d.error.contains("couldn't be read")) << damaged;
    }
}

TEST(KeepAwakeScheduleStore, NumbersBeyondAnIntAreKeptOutOfRangeNotWrapped) {
    // 4294967836 is 2^32 + 540 and 4294967297 is 2^32 + 1: wrapped, they would read as 09:00
    // and Sunday, and the schedule would open.
    const auto decoded = KeepAwakeScheduleStore::decode(
        R"([{"id":"8f4c8d52-4a2f-4d59-9a0b-0c9a4f1f2a11","name":"Odd","isEnabled":true,)"
        R"("weekdays":[2],"startMinutes":4294967836,"endMinutes":600},)"
        R"({"id":"0b7f5f0e-2a61-4f7e-8a8a-3c3f0a8d9e21","name":"Odd day","isEnabled":true,)"
        R"("weekdays":[4294967297],"startMinutes":540,"endMinutes":600},)"
        R"({"id":"5d1e6f2a-7b3c-4e8d-9f0a-1b2c3d4e5f60","name":"Below","isEnabled":true,)"
        R"("weekdays":[2],"startMinutes":-4294966756,"endMinutes":600}])");
    EXPECT_TRUE(decoded.error.isEmpty()) << decoded.error.toStdString();
    ASSERT_EQ(decoded.schedules.size(), 3u);
    EXPECT_NE(decoded.schedules[0].startMinutes, 540);
    EXPECT_FALSE(decoded.schedules[0].isValid());
    EXPECT_FALSE(decoded.schedules[1].weekdays.contains(1));
    EXPECT_FALSE(decoded.schedules[1].isValid());
    EXPECT_NE(decoded.schedules[2].startMinutes, 540);
    EXPECT_FALSE(decoded.schedules[2].isValid());
}
