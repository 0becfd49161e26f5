#include "app/homebrew/brew_model.h"

#include "core/homebrew/brew_askpass.h"
#include "core/homebrew/brew_parsing.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/brew_updates.h"
#include "core/settings/preferences.h"

#include <QMetaObject>
#include <QPointer>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

namespace tarvik {

BrewModel::BrewModel(Preferences& preferences, std::shared_ptr<BrewRunner> runner, QObject* parent)
    : QObject(parent), prefs_(preferences), runner_(std::move(runner)) {}

BrewModel::~BrewModel() {
    runner_->cancel();
    loadWatcher_.waitForFinished();
    runWatcher_.waitForFinished();
}

bool BrewModel::greedy() const {
    return prefs_.value(pref::kHomebrewIncludeGreedy).toBool();
}

void BrewModel::load() {
    if (loading_) {
        return;
    }
    loading_ = true;
    loadError_.clear();
    emit changed();
    QPointer<BrewModel> self(this);
    auto runner = runner_;
    const bool greedyToo = greedy();
    loadWatcher_.setFuture(QtConcurrent::run([self, runner, greedyToo] {
        std::optional<BrewSnapshot> snapshot;
        std::optional<BrewEnvironment> env;
        QString error;
        bool missing = false;
        try {
            env = runner->resolve();
            snapshot = loadBrewSnapshot(*runner, greedyToo);
            // "Measuring what's installed": sizes come last, the list is usable without them.
            measureBrewPackages(snapshot->packages, *env);
        } catch (const BrewError& e) {
            missing = e.kind == BrewError::Kind::NotInstalled;
            error =
                missing ? e.message() : QStringLiteral("Couldn't read Homebrew's package list.");
        } catch (const BrewParseError& e) {
            error = e.message;
        }
        QMetaObject::invokeMethod(
            self.data(),
            [self, snapshot, env, error, missing] {
                if (!self) {
                    return;
                }
                self->loading_ = false;
                self->notInstalled_ = missing;
                self->loadError_ = error;
                if (snapshot) {
                    self->snapshot_ = snapshot;
                }
                self->environment_ = env;
                emit self->changed();
            },
            Qt::QueuedConnection);
    }));
}

void BrewModel::start(Command command) {
    if (running_) {
        return;
    }
    running_ = true;
    title_ = command.title;
    log_.clear();
    tracker_ = BrewProgressTracker();
    progress_ = {};
    failure_.reset();
    last_ = command;
    emit changed();
    QPointer<BrewModel> self(this);
    auto runner = runner_;
    runWatcher_.setFuture(QtConcurrent::run([self, runner, command] {
        auto post = [self](std::function<void(BrewModel&)> f) {
            QMetaObject::invokeMethod(
                self.data(),
                [self, f] {
                    if (self)
                        f(*self);
                },
                Qt::QueuedConnection);
        };
        bool ok = false;
        QStringList lines;
        std::optional<BrewFailure> failure;
        try {
            // Another brew holding Homebrew's locks: say who, and wait for it.
            const BrewEnvironment env = runner->resolve();
            while (const auto busy = BrewRunner::isBusyElsewhere(env)) {
                post([busy](BrewModel& m) {
                    m.busy_ = busy;
                    emit m.changed();
                });
                QThread::sleep(2);
            }
            post([](BrewModel& m) {
                m.busy_.reset();
                emit m.changed();
            });
            std::uint64_t id = 0;
            const auto result =
                runner->run(command.arguments, false, command.environment, [&](const QString& raw) {
                    const BrewLogLine line = BrewLogParser::parse(raw, ++id);
                    lines << line.text;
                    post([line](BrewModel& m) {
                        m.log_ << line;
                        if (m.tracker_.feed(line.text)) {
                            m.progress_ = m.tracker_.current();
                            emit m.progressChanged();
                        }
                        emit m.logLine(line);
                    });
                });
            ok = result.succeeded();
            if (!ok) {
                failure = BrewFailure::explain(command.displayName, command.displayName, lines);
            }
        } catch (const BrewError& e) {
            failure = BrewFailure{e.message(), QStringLiteral("Retry")};
        }
        post([ok, failure, reload = command.reloadAfter](BrewModel& m) {
            m.running_ = false;
            m.failure_ = failure;
            emit m.changed();
            emit m.commandFinished(ok);
            if (reload && ok) {
                m.load();
            }
        });
    }));
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
    QPointer<BrewModel> self(this);
    auto runner = runner_;
    // Searching takes the runner's turn like any command, so it waits behind a running one.
    (void)QtConcurrent::run([self, runner, query] {
        BrewSearchResult found;
        QString error;
        try {
            found = searchBrew(*runner, query);
        } catch (const BrewError& e) {
            error = e.message();
        }
        QMetaObject::invokeMethod(
            self.data(),
            [self, query, found, error] {
                if (self) {
                    emit self->searchFinished(query, found.formulae, found.casks, error);
                }
            },
            Qt::QueuedConnection);
    });
}

void BrewModel::retry() {
    if (last_) {
        start(*last_);
    }
}

} // namespace tarvik
