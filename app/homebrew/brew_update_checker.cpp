#include "app/homebrew/brew_update_checker.h"

#include "core/homebrew/brew_parsing.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/brew_updates.h"
#include "core/settings/preferences.h"
#include "core/sys/desktop_notifier.h"
#include "core/text/counts.h"

namespace tarvik {
namespace {

constexpr const char* kLastCheckKey = "homebrewLastCheck";

} // namespace

BrewUpdateChecker::BrewUpdateChecker(Preferences& preferences, std::shared_ptr<BrewRunner> runner,
                                     QObject* parent)
    : QObject(parent), prefs_(preferences), runner_(std::move(runner)),
      job_(
          this, {},
          [this](int found) {
              if (found < 0) {
                  return; // no Homebrew, or it failed: try again at the next interval
              }
              if (found > count_ && found > 0) {
                  notifyDesktop(
                      tr("Homebrew updates"),
                      tr("%1 can be upgraded.").arg(countOf(found, u"package", u"packages")));
              }
              setOutdatedCount(found);
          },
          JobThread::Own) {
    // Every ten minutes it looks whether a check is due; the interval itself is the setting's.
    timer_.setInterval(10 * 60 * 1000);
    connect(&timer_, &QTimer::timeout, this, &BrewUpdateChecker::checkIfDue);
    timer_.start();
    QTimer::singleShot(60 * 1000, this, &BrewUpdateChecker::checkIfDue);
}

BrewUpdateChecker::~BrewUpdateChecker() = default;

void BrewUpdateChecker::setOutdatedCount(int count) {
    if (count != count_) {
        count_ = count;
        emit outdatedCountChanged(count);
    }
}

bool BrewUpdateChecker::checkIfDue() {
    const QVariant last = prefs_.value(kLastCheckKey);
    const std::optional<QDateTime> lastCheck =
        last.isValid() ? std::optional(QDateTime::fromString(last.toString(), Qt::ISODate))
                       : std::nullopt;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (job_.isRunning() ||
        !isUpdateCheckDue(lastCheck, now, prefs_.value(pref::kHomebrewCheckInterval).toDouble())) {
        return false;
    }
    prefs_.setValue(kLastCheckKey, now.toString(Qt::ISODate));
    prefs_.sync();
    const bool greedy = prefs_.value(pref::kHomebrewIncludeGreedy).toBool();
    auto runner = runner_;
    job_.start([runner, greedy](JobContext<double>&) {
        try {
            const BrewEnvironment env = runner->resolve();
            if (BrewRunner::isBusyElsewhere(env)) {
                return -1; // someone else is updating right now
            }
            runner->run(BrewCommands::update(), true);
            int upgradable = 0;
            for (const auto& o :
                 BrewParsing::parseOutdated(runner->json(BrewCommands::outdated(greedy)))) {
                upgradable += o.pinned ? 0 : 1;
            }
            return upgradable;
        } catch (const BrewError&) {
            return -1;
        } catch (const BrewParseError&) {
            return -1;
        }
    });
    return true;
}

} // namespace tarvik
