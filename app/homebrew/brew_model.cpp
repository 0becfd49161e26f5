#include "app/homebrew/brew_model.h"

#include "core/homebrew/brew_askpass.h"
#include "core/homebrew/brew_parsing.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/brew_updates.h"
#include "core/settings/preferences.h"

#include <QThread>
#include <utility>

namespace tarvik {

BrewModel::BrewModel(Preferences& preferences, std::shared_ptr<BrewRunner> runner, QObject* parent)
    : QObject(parent), prefs_(preferences), runner_(std::move(runner)),
      loadJob_(
          this, {},
          [this](Loaded r) {
              notInstalled_ = r.missing;
              loadError_ = r.error;
              if (r.snapshot) {
                  snapshot_ = std::move(r.snapshot);
              }
              environment_ = r.environment;
              emit changed();
          },
          JobThread::Own),
      runJob_(
          this,
          [this](const RunProgress& p) {
              if (p.busyKnown && p.busy != busy_) {
                  busy_ = p.busy;
                  emit changed();
              }
              for (const BrewLogLine& line : p.lines) {
                  log_ << line;
                  if (tracker_.feed(line.text)) {
                      progress_ = tracker_.current();
                      emit progressChanged();
                  }
                  emit logLine(line);
              }
          },
          [this](Ran r) {
              failure_ = r.failure;
              emit changed();
              emit commandFinished(r.ok);
              if (r.reload && r.ok) {
                  load();
              }
          },
          JobThread::Own),
      searchJob_(
          this, {},
          [this](Found f) {
              emit searchFinished(f.query, f.result.formulae, f.result.casks, f.error);
              if (nextQuery_) {
                  search(*std::exchange(nextQuery_, std::nullopt));
              }
          },
          JobThread::Own) {}

BrewModel::~BrewModel() {
    // Stops the brew under way, so the jobs' waits are short.
    runner_->cancel();
}

bool BrewModel::greedy() const {
    return prefs_.value(pref::kHomebrewIncludeGreedy).toBool();
}

void BrewModel::load() {
    if (loadJob_.isRunning()) {
        return;
    }
    loadError_.clear();
    loadJob_.start([runner = runner_, greedyToo = greedy()](JobContext<double>&) {
        Loaded r;
        try {
            r.environment = runner->resolve();
            r.snapshot = loadBrewSnapshot(*runner, greedyToo);
            // "Measuring what's installed": sizes come last, the list is usable without them.
            measureBrewPackages(r.snapshot->packages, *r.environment);
        } catch (const BrewError& e) {
            r.missing = e.kind == BrewError::Kind::NotInstalled;
            r.error =
                r.missing ? e.message() : QStringLiteral("Couldn't read Homebrew's package list.");
        } catch (const BrewParseError& e) {
            r.error = e.message;
        }
        return r;
    });
    emit changed();
}

void BrewModel::start(Command command) {
    if (runJob_.isRunning()) {
        return;
    }
    title_ = command.title;
    log_.clear();
    tracker_ = BrewProgressTracker();
    progress_ = {};
    failure_.reset();
    last_ = command;
    runJob_.start([runner = runner_, command](JobContext<RunProgress>& job) {
        Ran r{false, std::nullopt, command.reloadAfter};
        QStringList lines;
        try {
            // Another brew holding Homebrew's locks: say who, and wait for it.
            const BrewEnvironment env = runner->resolve();
            while (const auto busy = BrewRunner::isBusyElsewhere(env)) {
                job.update([&busy](RunProgress& p) {
                    p.busy = busy;
                    p.busyKnown = true;
                });
                QThread::sleep(2);
            }
            job.update([](RunProgress& p) {
                p.busy.reset();
                p.busyKnown = true;
            });
            std::uint64_t id = 0;
            const auto result =
                runner->run(command.arguments, false, command.environment, [&](const QString& raw) {
                    BrewLogLine line = BrewLogParser::parse(raw, ++id);
                    lines << line.text;
                    job.update([&line](RunProgress& p) { p.lines.push_back(std::move(line)); });
                });
            r.ok = result.succeeded();
            if (!r.ok) {
                r.failure = BrewFailure::explain(command.displayName, command.displayName, lines);
            }
        } catch (const BrewError& e) {
            r.failure = BrewFailure{e.message(), QStringLiteral("Retry")};
        }
        return r;
    });
    emit changed();
}

void BrewModel::upgrade(const QStringList& names) {
    QStringList formulae;
    QStringList casks;
    if (snapshot_) {
        for (const QString& n : names) {
            for (const auto& p : snapshot_->packages) {
                if (p.id == n) {
                    (p.kind == BrewPackageKind::Cask ? casks : formulae) << n;
                }
            }
        }
    }
    start({names.isEmpty() ? tr("Upgrading everything") : tr("Upgrading %1").arg(names.join(", ")),
           names.size() == 1 ? names.front() : tr("the packages"),
           BrewCommands::upgrade(formulae, casks, greedy()),
           {},
           true});
}

void BrewModel::install(const QString& name, BrewPackageKind kind) {
    start({tr("Installing %1").arg(name), name, BrewCommands::install(name, kind), {}, true});
}

void BrewModel::uninstall(const QString& name, BrewPackageKind kind, bool force) {
    bool admin = false;
    if (snapshot_) {
        for (const auto& p : snapshot_->packages) {
            admin = admin || (p.id == name && p.needsAdmin);
        }
    }
    start({tr("Uninstalling %1").arg(name), name, BrewCommands::uninstall(name, kind, force),
           admin ? BrewAskpass::environment(BrewAskpass::defaultSupportDirectory())
                 : QMap<QString, QString>{},
           true});
}

void BrewModel::unpin(const QString& name) {
    start({tr("Unpinning %1").arg(name), name, BrewCommands::unpin(name), {}, true});
}

void BrewModel::doctor() {
    start({tr("Checking Homebrew"), QStringLiteral("Homebrew"), BrewCommands::doctor(), {}, false});
}

void BrewModel::cleanupPreview() {
    start({tr("What a cleanup would remove"),
           QStringLiteral("Homebrew"),
           BrewCommands::cleanupPreview(),
           {},
           false});
}

void BrewModel::orphanPreview() {
    start({tr("Dependencies nothing needs any more"),
           QStringLiteral("Homebrew"),
           BrewCommands::orphanPreview(),
           {},
           false});
}

void BrewModel::cleanup() {
    start({tr("Cleaning up"), QStringLiteral("Homebrew"), BrewCommands::cleanup(), {}, true});
}

void BrewModel::cancel() {
    runner_->cancel();
}

void BrewModel::search(const QString& query) {
    // One search at a time; a query typed meanwhile runs next, and only the newest.
    if (searchJob_.isRunning()) {
        nextQuery_ = query;
        return;
    }
    // Searching takes the runner's turn like any command, so it waits behind a running one.
    searchJob_.start([runner = runner_, query](JobContext<double>&) {
        Found f{query, {}, {}};
        try {
            f.result = searchBrew(*runner, query);
        } catch (const BrewError& e) {
            f.error = e.message();
        }
        return f;
    });
}

void BrewModel::retry() {
    if (last_) {
        start(*last_);
    }
}

} // namespace tarvik
