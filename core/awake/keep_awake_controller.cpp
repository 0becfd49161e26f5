#include "core/awake/keep_awake_controller.h"

#include "core/awake/keep_awake_texts.h"
#include "core/text/platform_words.h"

#include <algorithm>

namespace tarvik {

namespace {

// Windows open and close on the minute; a tick a little after each change applies it.
constexpr qint64 kLongestTickMs = 30'000;
constexpr qint64 kTickSlackMs = 50;

const QString kWho = QStringLiteral("Tarvik");
const QString kWhy = QStringLiteral("Tarvik Keep Awake");

} // namespace

KeepAwakeController::KeepAwakeController(KeepAwakeBuses buses, Clock clock, QObject* parent)
    : QObject(parent), logind_(buses.system), screenSaver_(buses.session),
      clock_(clock ? std::move(clock) : Clock([] { return QDateTime::currentDateTime(); })) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &KeepAwakeController::evaluate);
    evaluate();
}

KeepAwakeController::~KeepAwakeController() {
    releaseAll();
}

void KeepAwakeController::setSchedules(std::vector<KeepAwakeSchedule> schedules, QString error) {
    schedules_ = std::move(schedules);
    schedulesError_ = std::move(error);
    evaluate();
}

void KeepAwakeController::saveSchedule(const KeepAwakeSchedule& schedule) {
    auto it = std::ranges::find(schedules_, schedule.id, &KeepAwakeSchedule::id);
    if (it != schedules_.end()) {
        *it = schedule;
    } else {
        schedules_.push_back(schedule);
    }
    schedulesError_.clear();
    emit schedulesEdited(schedules_);
    evaluate();
}

void KeepAwakeController::removeSchedule(const QUuid& id) {
    std::erase_if(schedules_, [&](const KeepAwakeSchedule& s) { return s.id == id; });
    emit schedulesEdited(schedules_);
    evaluate();
}

void KeepAwakeController::startManual(const ManualSession& session) {
    manual_ = session;
    skipWindowUntil_.reset();
    evaluate();
}

void KeepAwakeController::startManual(ManualSession::Duration duration) {
    startManual(ManualSession::starting(clock_(), duration));
}

void KeepAwakeController::turnOff() {
    manual_.reset();
    const KeepAwakeState withoutManual = KeepAwakeEvaluator::evaluate(schedules_, {}, clock_());
    if (withoutManual.isActive) {
        skipWindowUntil_ = withoutManual.until;
    }
    evaluate();
}

void KeepAwakeController::setKeepsRunningWithLidClosed(bool on) {
    if (on == lidClosed_) {
        return;
    }
    lidClosed_ = on;
    declinedLidTarget_.reset();
    apply();
    emit changed();
}

void KeepAwakeController::chooseKeepsRunningWithLidClosed(bool on) {
    emit lidOptionEdited(on);
    setKeepsRunningWithLidClosed(on);
}

void KeepAwakeController::evaluate() {
    now_ = clock_();
    if (manual_ && manual_->hasEnded(now_)) {
        manual_.reset();
    }
    if (skipWindowUntil_ && *skipWindowUntil_ <= now_) {
        skipWindowUntil_.reset();
    }
    state_ = skipWindowUntil_ ? KeepAwakeEvaluator::evaluate({}, manual_, now_)
                              : KeepAwakeEvaluator::evaluate(schedules_, manual_, now_);
    apply();
    armTimer();
    emit changed();
}

void KeepAwakeController::armTimer() {
    qint64 wait = kLongestTickMs;
    auto until = [&](const QDateTime& t) {
        wait = std::clamp(now_.msecsTo(t) + kTickSlackMs, qint64{0}, wait);
    };
    if (state_.until) {
        until(*state_.until);
    }
    if (skipWindowUntil_) {
        until(*skipWindowUntil_);
    }
    if (auto next = KeepAwakeEvaluator::nextWindowStart(schedules_, now_)) {
        until(*next);
    }
    timer_.start(static_cast<int>(wait));
}

void KeepAwakeController::apply() {
    if (!state_.isActive) {
        releaseAll();
        error_.clear();
        lidError_.clear();
        return;
    }
    if (!sleepLock_.isHeld()) {
        sleepLock_ =
            logind_.inhibit(QStringLiteral("idle:sleep"), kWho, kWhy, QStringLiteral("block"));
        error_ = sleepLock_.isHeld() ? QString()
                                     : QStringLiteral("Couldn't keep the %1 awake: %2")
                                           .arg(words::computer(), sleepLock_.error);
    }
    screenSaver_.inhibit(kWho, kWhy);
    applyLid(keepsRunningWithLidClosed());
}

void KeepAwakeController::applyLid(bool target) {
    if (target == lidLock_.isHeld()) {
        return;
    }
    if (!target) {
        lidLock_ = {}; // closing the descriptor hands the lid back to logind
        lidError_.clear();
        return;
    }
    if (declinedLidTarget_ == target) {
        // Refused before: asking again would only repeat the refusal, which still holds.
        lidError_ = awake_text::lidRefused();
        return;
    }
    lidLock_ =
        logind_.inhibit(QStringLiteral("handle-lid-switch"), kWho, kWhy, QStringLiteral("block"));
    if (lidLock_.isHeld()) {
        lidError_.clear();
        declinedLidTarget_.reset();
    } else if (lidLock_.refused) {
        declinedLidTarget_ = target;
        lidError_ = awake_text::lidRefused();
    } else {
        lidError_ = awake_text::lidFailed(lidLock_.error); // tried again on the next tick
    }
}

void KeepAwakeController::releaseAll() {
    const bool heldLid = lidLock_.isHeld();
    sleepLock_ = {};
    lidLock_ = {};
    screenSaver_.release();
    if (heldLid && logind_.lidClosed().value_or(false)) {
        // The lid was shut while we held its switch: sleep now, as closing it would have.
        logind_.suspend();
    }
}

} // namespace tarvik
