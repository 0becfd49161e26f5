#pragma once

#include "core/homebrew/brew_environment.h"
#include "core/homebrew/brew_error.h"

#include <QByteArray>
#include <QMap>
#include <QStringList>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

namespace tarvik {

// The one way this program runs brew: one command at a time, in strict arrival order, with a
// fixed environment, its merged output streamed line by line. Calls block their own (worker)
// thread; any thread may call `cancel`.
class BrewRunner {
public:
    struct Options {
        QStringList candidates = defaultBrewCandidates();
        std::optional<QString> searchPath; // default: $PATH
        // How long a command that answers a question (JSON, a search) may stay silent before it
        // is taken to hang and is stopped. Upgrades and installs may build for an hour without
        // a word, so they have no such limit: they are cancelled by the person.
        std::chrono::milliseconds answerQuietLimit = std::chrono::minutes(2);
    };
    struct Result {
        int code = 0;
        QString output;
        bool succeeded() const { return code == 0; }
    };
    struct BusyInfo {
        std::int32_t pid = 0;
        QString command;
        QString elapsed;
        bool operator==(const BusyInfo&) const = default;
    };

    BrewRunner();
    explicit BrewRunner(Options options);

    // Throws BrewError (TimedOut when `quietLimit` passes without a byte of output).
    Result run(const QStringList& arguments, bool autoUpdate = false,
               const QMap<QString, QString>& extraEnvironment = {},
               const std::function<void(const QString&)>& onLine = {},
               std::optional<std::chrono::milliseconds> quietLimit = std::nullopt);
    // The output of a command that answers a question, within the answer quiet limit.
    Result answer(const QStringList& arguments);
    // The output of a JSON command; throws BrewError::Failed when brew exits non-zero.
    QByteArray json(const QStringList& arguments);
    // Interrupts the running command (as Ctrl-C); it then fails with Cancelled. Queued
    // commands are not affected.
    void cancel();
    std::optional<BrewEnvironment> environment() const;
    // Commands holding or waiting for the turn.
    std::uint64_t pending() const;
    // Resolves where brew is now (without running a command); throws NotInstalled.
    BrewEnvironment resolve();

    // Another brew process holding Homebrew's locks, if any; never fails.
    static std::optional<BusyInfo> isBusyElsewhere(const BrewEnvironment& environment);
    // The decision on `ps -axo pid=,etime=,command=` output, for a given brew and own pid.
    static std::optional<BusyInfo> busyFromPs(const QString& psOutput, const QString& brewPath,
                                              std::int32_t ownPid);

private:
    void acquire();
    void release();

    Options options_;
    mutable std::mutex mutex_;
    std::condition_variable turn_;
    std::uint64_t nextTicket_ = 0;
    std::uint64_t serving_ = 0;
    std::optional<BrewEnvironment> environment_;
    std::atomic<bool> cancelled_ = false;
    std::atomic<std::int64_t> runningPid_ = 0;
};

} // namespace tarvik
