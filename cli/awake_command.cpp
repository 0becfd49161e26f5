#include "cli/commands.h"
#include "cli/output.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/text/platform_words.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdio>

namespace tarvik::cli {
namespace {

std::atomic<bool> stopRequested = false;
void onStop(int) {
    stopRequested = true;
}

// "2h", "90m", "1h30m", "45" (minutes); nothing when the text is not a duration.
std::optional<qint64> parseDuration(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral("^\\s*(?:(\\d+)\\s*h)?\\s*(?:(\\d+)\\s*(?:m|min)?)?\\s*$"));
    const auto m = form.match(text.toLower());
    if (!m.hasMatch() || text.trimmed().isEmpty()) {
        return std::nullopt;
    }
    const qint64 seconds = m.captured(1).toLongLong() * 3600 + m.captured(2).toLongLong() * 60;
    return seconds > 0 ? std::optional(seconds) : std::nullopt;
}

// "17:30" -> minutes after midnight.
std::optional<int> parseClock(const QString& text) {
    const QTime t = QTime::fromString(text.trimmed(), QStringLiteral("H:mm"));
    return t.isValid() ? std::optional(t.hour() * 60 + t.minute()) : std::nullopt;
}

// "mon-fri", "every-day", "weekends", "mon,wed,sat".
std::optional<std::set<int>> parseDays(const QString& text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("mon-fri") || t == QLatin1String("weekdays")) {
        return KeepAwakeSchedule::weekdaysPreset();
    }
    if (t == QLatin1String("every-day") || t == QLatin1String("daily")) {
        return KeepAwakeSchedule::everyDay();
    }
    if (t == QLatin1String("weekends")) {
        return std::set<int>{1, 7};
    }
    static const QStringList names{"sun", "mon", "tue", "wed", "thu", "fri", "sat"};
    std::set<int> days;
    for (const QString& part : t.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const auto i = names.indexOf(part.trimmed().left(3));
        if (i < 0) {
            return std::nullopt;
        }
        days.insert(static_cast<int>(i) + 1);
    }
    return days.empty() ? std::nullopt : std::optional(days);
}

QString scheduleLine(const KeepAwakeSchedule& s) {
    QString line =
        QStringLiteral("%1 %2–%3")
            .arg(weekdaysText(s.weekdays), minutesText(s.startMinutes), minutesText(s.endMinutes));
    if (s.endsNextDay()) {
        line += QStringLiteral(" (next day)");
    }
    if (!s.isEnabled) {
        line += QStringLiteral(", off");
    }
    if (!s.isValid()) {
        line += QStringLiteral(", never opens: ") +
                (s.startMinutes == s.endMinutes ? startEqualsEndText()
                                                : QStringLiteral("check its days and times"));
    }
    return line;
}

QJsonObject scheduleJson(const KeepAwakeSchedule& s) {
    QJsonArray days;
    for (int d : s.weekdays) {
        days.append(d);
    }
    return {{"id", s.id.toString(QUuid::WithoutBraces)},
            {"name", s.displayName()},
            {"isEnabled", s.isEnabled},
            {"isValid", s.isValid()},
            {"weekdays", days},
            {"start", minutesText(s.startMinutes)},
            {"end", minutesText(s.endMinutes)},
            {"durationMinutes", s.durationMinutes()}};
}

struct HoldOptions {
    std::string forText;
    std::string untilText;
    bool indefinite = false;
};

int hold(const HoldOptions& o) {
    const QDateTime now = QDateTime::currentDateTime();
    ManualSession session = ManualSession::indefinite();
    if (!o.forText.empty()) {
        const auto seconds = parseDuration(QString::fromStdString(o.forText));
        if (!seconds) {
            printError(QStringLiteral("--for takes a length such as 45m, 2h or 1h30m."));
            return kExitUsage;
        }
        session = ManualSession::endingAt(now.addSecs(*seconds));
    } else if (!o.untilText.empty()) {
        const auto minutes = parseClock(QString::fromStdString(o.untilText));
        if (!minutes) {
            printError(QStringLiteral("--until takes a time of day such as 17:30."));
            return kExitUsage;
        }
        QDateTime end(now.date(), QTime(*minutes / 60, *minutes % 60));
        if (end <= now) {
            end = end.addDays(1); // a time already past today means tomorrow
        }
        session = ManualSession::endingAt(end);
    }

    // Caught from before the first line: a script may interrupt as soon as it reads it.
    stopRequested = false;
    std::signal(SIGINT, onStop);
    std::signal(SIGTERM, onStop);
    const auto defaultSignals = qScopeGuard([] {
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
    });

    const Preferences prefs;
    KeepAwakeController controller;
    auto stored = CapabilitySettings::schedules(prefs);
    controller.setSchedules(std::move(stored.schedules), stored.error);
    controller.setKeepsRunningWithLidClosed(prefs.value(pref::kKeepAwakeLidClosed).toBool());
    controller.startManual(session);
    if (!controller.error().isEmpty()) {
        printError(controller.error());
        return kExitFailed;
    }
    printLine(QStringLiteral("Keeping the %1 awake: %2. Press Ctrl-C to stop.")
                  .arg(words::computer(), awake_text::status(controller.state(), now)));
    if (!controller.lidError().isEmpty()) {
        printError(controller.lidError());
    }
    std::fflush(stdout); // a script waiting for this line sees it now

    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (stopRequested || !controller.manual()) {
            QCoreApplication::quit();
        }
    });
    poll.start(100);
    QCoreApplication::exec();
    controller.turnOff();
    printLine(QStringLiteral("Stopped keeping awake; sleep settings apply again."));
    return kExitOk;
}

int status(bool asJson) {
    const Preferences prefs;
    const auto stored = CapabilitySettings::schedules(prefs);
    const QDateTime now = QDateTime::currentDateTime();
    const KeepAwakeState bySchedule =
        KeepAwakeEvaluator::evaluate(stored.schedules, std::nullopt, now);
    const auto next = KeepAwakeEvaluator::nextWindowStart(stored.schedules, now);
    const auto held = keepAwakeHolders();
    QJsonArray holders;
    for (const auto& i : held.value_or(std::vector<Logind::Inhibitor>{})) {
        holders.append(QJsonObject{{"what", i.what}, {"pid", qint64{i.pid}}});
    }
    const bool inhibitors = held.has_value();
    if (asJson) {
        QJsonObject out{
            {"keptAwake", inhibitors ? QJsonValue(!holders.isEmpty()) : QJsonValue()},
            {"holders", holders},
            {"schedules", static_cast<int>(stored.schedules.size())},
            {"keepsRunningWithLidClosed", prefs.value(pref::kKeepAwakeLidClosed).toBool()}};
        if (bySchedule.isActive) {
            out["openSchedule"] = QJsonObject{{"name", bySchedule.schedule->displayName()},
                                              {"until", bySchedule.until->toString(Qt::ISODate)}};
        }
        if (next) {
            out["nextWindow"] = next->toString(Qt::ISODate);
        }
        if (!stored.error.isEmpty()) {
            out["schedulesError"] = stored.error;
        }
        printJson(QJsonDocument(out));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    if (!inhibitors) {
        rows.emplace_back("Now", QStringLiteral("Unknown: systemd-logind can't be reached"));
    } else if (holders.isEmpty()) {
        rows.emplace_back("Now", awake_text::status(KeepAwakeState::inactive(), now));
    } else {
        QStringList pids;
        for (const auto& h : holders) {
            pids << QString::number(h.toObject()["pid"].toInteger());
        }
        rows.emplace_back("Now", QStringLiteral("Kept awake by Tarvik (process %1)")
                                     .arg(pids.join(QStringLiteral(", "))));
    }
    if (bySchedule.isActive) {
        rows.emplace_back("Schedule", QStringLiteral("“%1” is open until %2")
                                          .arg(bySchedule.schedule->displayName(),
                                               awake_text::endTime(*bySchedule.until, now)));
    } else if (next) {
        rows.emplace_back("Next window", awake_text::endTime(*next, now));
    }
    rows.emplace_back("Schedules", QString::number(stored.schedules.size()));
    rows.emplace_back(awake_text::lidOption(),
                      prefs.value(pref::kKeepAwakeLidClosed).toBool() ? "on" : "off");
    printRows(rows);
    if (!stored.error.isEmpty()) {
        printError(stored.error);
    }
    if (!stored.schedules.empty()) {
        printLine(QStringLiteral("Schedules apply while Tarvik runs in the tray."));
    }
    return kExitOk;
}

int listSchedules(bool asJson) {
    const Preferences prefs;
    const auto stored = CapabilitySettings::schedules(prefs);
    if (!stored.error.isEmpty()) {
        printError(stored.error);
    }
    if (asJson) {
        QJsonArray out;
        for (const auto& s : stored.schedules) {
            out.append(scheduleJson(s));
        }
        printJson(QJsonDocument(out));
        return kExitOk;
    }
    if (stored.schedules.empty()) {
        printLine(QStringLiteral("No keep-awake schedules. Add one with `tarvik awake schedules "
                                 "add --days mon-fri --from 09:00 --to 17:00`."));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    for (const auto& s : stored.schedules) {
        rows.emplace_back(s.displayName(), scheduleLine(s) + QStringLiteral("  [") +
                                               s.id.toString(QUuid::WithoutBraces).left(8) +
                                               QLatin1Char(']'));
    }
    printRows(rows);
    return kExitOk;
}

struct AddOptions {
    std::string name;
    std::string days = "mon-fri";
    std::string from;
    std::string to;
    bool disabled = false;
};

int addSchedule(const AddOptions& o) {
    KeepAwakeSchedule s;
    s.name = QString::fromStdString(o.name);
    s.isEnabled = !o.disabled;
    const auto days = parseDays(QString::fromStdString(o.days));
    const auto from = parseClock(QString::fromStdString(o.from));
    const auto to = parseClock(QString::fromStdString(o.to));
    if (!days) {
        printError(QStringLiteral("--days takes mon-fri, every-day, weekends or days such as "
                                  "mon,wed,fri."));
        return kExitUsage;
    }
    if (!from || !to) {
        printError(QStringLiteral("--from and --to take times of day such as 09:00 and 17:30."));
        return kExitUsage;
    }
    s.weekdays = *days;
    s.startMinutes = *from;
    s.endMinutes = *to;
    if (!s.isValid()) {
        printError(startEqualsEndText());
        return kExitUsage;
    }
    Preferences prefs;
    auto stored = CapabilitySettings::schedules(prefs);
    if (!stored.error.isEmpty()) {
        printError(stored.error);
    }
    stored.schedules.push_back(s);
    CapabilitySettings::storeSchedules(prefs, stored.schedules);
    QString line = QStringLiteral("Added “%1”: %2.").arg(s.displayName(), scheduleLine(s));
    if (s.endsNextDay()) {
        line += QLatin1Char(' ') + endsNextDayText();
    }
    printLine(line);
    return kExitOk;
}

int removeSchedule(const std::string& which) {
    Preferences prefs;
    auto stored = CapabilitySettings::schedules(prefs);
    const QString key = QString::fromStdString(which);
    std::vector<KeepAwakeSchedule> matches;
    for (const auto& s : stored.schedules) {
        if (s.id.toString(QUuid::WithoutBraces).startsWith(key, Qt::CaseInsensitive) ||
            s.displayName().trimmed().compare(key.trimmed(), Qt::CaseInsensitive) == 0) {
            matches.push_back(s);
        }
    }
    if (matches.size() != 1) {
        printError(matches.empty()
                       ? QStringLiteral("No schedule is called or numbered “%1”. Run `tarvik "
                                        "awake schedules list` to see them.")
                             .arg(key)
                       : QStringLiteral("“%1” names several schedules; give the number in "
                                        "brackets from `tarvik awake schedules list`.")
                             .arg(key));
        return kExitUsage;
    }
    std::erase_if(stored.schedules,
                  [&](const KeepAwakeSchedule& s) { return s.id == matches.front().id; });
    CapabilitySettings::storeSchedules(prefs, stored.schedules);
    printLine(QStringLiteral("Removed “%1”.").arg(matches.front().displayName()));
    return kExitOk;
}

} // namespace

std::optional<std::vector<Logind::Inhibitor>> keepAwakeHolders() {
    auto all = Logind().inhibitors();
    if (all) {
        std::erase_if(*all,
                      [](const Logind::Inhibitor& i) { return i.who != QLatin1String("Tarvik"); });
    }
    return all;
}

void addAwakeCommand(CLI::App& app, CommandResult& result) {
    auto* awake = app.add_subcommand(
        "awake", "Keep the computer awake until a time or Ctrl-C; manage keep-awake schedules");
    auto hold_ = std::make_shared<HoldOptions>();
    auto* forOpt = awake->add_option("--for", hold_->forText, "For a length such as 45m or 2h");
    auto* untilOpt = awake->add_option("--until", hold_->untilText, "Until a time of day (17:30)");
    auto* indefinite =
        awake->add_flag("--indefinite", hold_->indefinite, "Until Ctrl-C (the default)");
    forOpt->excludes(untilOpt)->excludes(indefinite);
    untilOpt->excludes(indefinite);
    awake->callback([&result, hold_, awake] {
        if (awake->get_subcommands().empty()) {
            result.run = [hold_] {
                return hold(*hold_);
            };
        }
    });

    auto* statusCmd = awake->add_subcommand("status", "Whether Tarvik keeps the computer awake");
    auto statusJson = std::make_shared<bool>(false);
    statusCmd->add_flag("--json", *statusJson, "Print JSON");
    statusCmd->callback([&result, statusJson] {
        result.run = [statusJson] {
            return status(*statusJson);
        };
    });

    auto* schedules = awake->add_subcommand("schedules", "List, add and remove schedules");
    schedules->require_subcommand(1);
    auto* list = schedules->add_subcommand("list", "List the schedules");
    auto listJson = std::make_shared<bool>(false);
    list->add_flag("--json", *listJson, "Print JSON");
    list->callback([&result, listJson] {
        result.run = [listJson] {
            return listSchedules(*listJson);
        };
    });

    auto* add = schedules->add_subcommand("add", "Add a weekly window");
    auto addOpts = std::make_shared<AddOptions>();
    add->add_option("--name", addOpts->name, "A name for the list");
    add->add_option("--days", addOpts->days, "mon-fri (default), every-day, weekends, mon,wed");
    add->add_option("--from", addOpts->from, "Start, such as 09:00")->required();
    add->add_option("--to", addOpts->to,
                    "End, such as 17:30; earlier than --from runs past "
                    "midnight")
        ->required();
    add->add_flag("--disabled", addOpts->disabled, "Add it switched off");
    add->callback([&result, addOpts] {
        result.run = [addOpts] {
            return addSchedule(*addOpts);
        };
    });

    auto* remove = schedules->add_subcommand("remove", "Remove a schedule by name or number");
    auto which = std::make_shared<std::string>();
    remove->add_option("schedule", *which, "Its name or the number `list` shows")->required();
    remove->callback([&result, which] {
        result.run = [which] {
            return removeSchedule(*which);
        };
    });
}

} // namespace tarvik::cli
