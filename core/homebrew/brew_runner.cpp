#include "core/homebrew/brew_runner.h"

#include "core/homebrew/line_collector.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <csignal>
#include <unistd.h>

namespace tarvik {

BrewRunner::BrewRunner() : BrewRunner(Options{}) {}

BrewRunner::BrewRunner(Options options) : options_(std::move(options)) {
    if (!options_.searchPath && qEnvironmentVariableIsSet("PATH")) {
        options_.searchPath = qEnvironmentVariable("PATH");
    }
}

void BrewRunner::acquire() {
    std::unique_lock lock(mutex_);
    const std::uint64_t ticket = nextTicket_++;
    turn_.wait(lock, [this, ticket] { return serving_ == ticket; });
}

void BrewRunner::release() {
    {
        std::lock_guard lock(mutex_);
        ++serving_;
    }
    turn_.notify_all();
}

std::uint64_t BrewRunner::pending() const {
    std::lock_guard lock(mutex_);
    return nextTicket_ - serving_;
}

std::optional<BrewEnvironment> BrewRunner::environment() const {
    std::lock_guard lock(mutex_);
    return environment_;
}

BrewEnvironment BrewRunner::resolve() {
    if (auto known = environment()) {
        return *known;
    }
    const auto path = locateBrew(options_.candidates, options_.searchPath);
    if (!path) {
        throw BrewError{BrewError::Kind::NotInstalled};
    }
    // The version comes from a direct run, outside the queue of commands.
    QProcess version;
    version.setProcessChannelMode(QProcess::MergedChannels);
    version.setStandardInputFile(QProcess::nullDevice());
    version.start(*path, {QStringLiteral("--version")});
    version.waitForFinished(30000);
    BrewEnvironment env{*path, brewPrefix(*path),
                        parseBrewVersion(QString::fromUtf8(version.readAll()))};
    std::lock_guard lock(mutex_);
    environment_ = env;
    return env;
}

BrewRunner::Result BrewRunner::run(const QStringList& arguments, bool autoUpdate,
                                   const QMap<QString, QString>& extraEnvironment,
                                   const std::function<void(const QString&)>& onLine,
                                   std::optional<std::chrono::milliseconds> quietLimit) {
    acquire();
    // The turn is given up on every way out, so a failed command never blocks the queue.
    struct Turn {
        BrewRunner* runner;
        ~Turn() { runner->release(); }
    } turn{this};

    const BrewEnvironment env = resolve();
    cancelled_ = false;

    QProcessEnvironment childEnv = QProcessEnvironment::systemEnvironment();
    childEnv.insert(QStringLiteral("HOMEBREW_NO_ENV_HINTS"), QStringLiteral("1"));
    childEnv.insert(QStringLiteral("HOMEBREW_NO_EMOJI"), QStringLiteral("1"));
    childEnv.remove(QStringLiteral("NO_COLOR"));
    if (!autoUpdate) {
        childEnv.insert(QStringLiteral("HOMEBREW_NO_AUTO_UPDATE"), QStringLiteral("1"));
    }
    for (auto it = extraEnvironment.begin(); it != extraEnvironment.end(); ++it) {
        childEnv.insert(it.key(), it.value());
    }

    QProcess child;
    child.setProcessEnvironment(childEnv);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.setStandardInputFile(QProcess::nullDevice());
    LineCollector collector(onLine);
    child.start(env.brewPath, arguments);
    if (!child.waitForStarted(30000)) {
        throw BrewError{BrewError::Kind::CouldNotRun};
    }
    runningPid_ = child.processId();
    if (cancelled_) {
        ::kill(static_cast<pid_t>(runningPid_.load()), SIGINT); // cancelled while starting
    }
    QElapsedTimer quiet;
    quiet.start();
    bool hung = false;
    while (child.state() != QProcess::NotRunning) {
        child.waitForReadyRead(200);
        const QByteArray got = child.readAll();
        if (!got.isEmpty()) {
            quiet.restart();
            collector.append(got);
        } else if (quietLimit && !hung &&
                   std::chrono::milliseconds(quiet.elapsed()) >= *quietLimit) {
            // Taken to hang: asked to stop as at Ctrl-C, then made to.
            hung = true;
            ::kill(static_cast<pid_t>(child.processId()), SIGINT);
            if (!child.waitForFinished(3000)) {
                child.kill();
                child.waitForFinished(3000);
            }
        }
    }
    runningPid_ = 0;
    if (hung) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(*quietLimit);
        throw BrewError{BrewError::Kind::TimedOut, static_cast<int>(seconds.count())};
    }
    collector.append(child.readAll()); // drain what is left in the pipe
    collector.flush();
    if (cancelled_) {
        throw BrewError{BrewError::Kind::Cancelled};
    }
    const int code = child.exitStatus() == QProcess::NormalExit ? child.exitCode() : 128 + SIGINT;
    return {code, collector.text()};
}

BrewRunner::Result BrewRunner::answer(const QStringList& arguments) {
    return run(arguments, false, {}, {}, options_.answerQuietLimit);
}

QByteArray BrewRunner::json(const QStringList& arguments) {
    const Result r = answer(arguments);
    if (!r.succeeded()) {
        throw BrewError{BrewError::Kind::Failed, r.code};
    }
    return r.output.toUtf8();
}

void BrewRunner::cancel() {
    cancelled_ = true;
    const auto pid = runningPid_.load();
    if (pid > 0) {
        ::kill(static_cast<pid_t>(pid), SIGINT);
    }
}

std::optional<BrewRunner::BusyInfo>
BrewRunner::busyFromPs(const QString& psOutput, const QString& brewPath, std::int32_t ownPid) {
    static const QRegularExpression kFields(QStringLiteral("^\\s*(\\S+)\\s+(\\S+)\\s+(.*)$"));
    for (const QString& line : psOutput.split(QLatin1Char('\n'))) {
        const auto m = kFields.match(line);
        if (!m.hasMatch()) {
            continue;
        }
        bool ok = false;
        const std::int32_t pid = m.captured(1).toInt(&ok);
        if (!ok || pid == ownPid) {
            continue;
        }
        const QString command = m.captured(3);
        const bool isBrew = command.startsWith(brewPath + QLatin1Char(' ')) ||
                            command.contains(QStringLiteral("/Library/Homebrew/brew.rb"));
        // Services stay up for hours and keep no other command out.
        if (!isBrew || command.contains(QStringLiteral("brew services"))) {
            continue;
        }
        QString shown = command;
        shown.replace(brewPath, QStringLiteral("brew"));
        return BusyInfo{pid, shown, m.captured(2)};
    }
    return std::nullopt;
}

std::optional<BrewRunner::BusyInfo>
BrewRunner::isBusyElsewhere(const BrewEnvironment& environment) {
    const QDir locks(environment.lockDirectory());
    if (!locks.exists() ||
        locks.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
            .isEmpty()) {
        return std::nullopt; // nobody holds Homebrew
    }
    QProcess ps;
    ps.setProcessChannelMode(QProcess::MergedChannels);
    ps.setStandardInputFile(QProcess::nullDevice());
    ps.start(QFile::exists(QStringLiteral("/bin/ps")) ? QStringLiteral("/bin/ps")
                                                      : QStringLiteral("ps"),
             {QStringLiteral("-axo"), QStringLiteral("pid=,etime=,command=")});
    if (!ps.waitForFinished(10000)) {
        return std::nullopt;
    }
    return busyFromPs(QString::fromUtf8(ps.readAll()), environment.brewPath,
                      static_cast<std::int32_t>(::getpid()));
}

} // namespace tarvik
