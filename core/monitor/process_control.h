#pragma once

#include "core/monitor/process_tracker.h"

#include <QString>
#include <sys/types.h>

namespace tarvik {

// Why a process may not be quit from here.
enum class QuitRefusal {
    None,
    PartOfSystem, // the desktop or the system would go with it
    OtherUser,    // it belongs to someone else
};

namespace ProcessGuard {
// Names whose loss ends the session or the system.
bool isProtectedName(std::string_view name);
QuitRefusal refusal(const ProcessUsage& process, std::int32_t ownPid, uid_t ownUid);
bool canQuit(const ProcessUsage& process, std::int32_t ownPid, uid_t ownUid);
} // namespace ProcessGuard

// What a quit came to.
enum class QuitOutcome {
    Ended,         // the process is gone
    Refused,       // the guard said no; nothing was sent
    NotResponding, // the signal went out but the process is still running
    Failed,        // the signal couldn't be delivered (gone meanwhile, or not allowed)
};

namespace ProcessControl {
// Sends SIGTERM (SIGKILL when forced) to the process, which is named by pid and start time so
// that a pid reused since the listing is never hit, then waits up to `waitMs` for it to end.
QuitOutcome quit(const ProcessUsage& process, bool force, int waitMs = 3000,
                 const std::filesystem::path& root = "/");
} // namespace ProcessControl

// A process as the user is asked and told about it: "“sleep” (PID 4242)", so that two
// processes of one name can be told apart.
QString processLabel(const QString& name, std::int32_t pid);

// The message for an outcome, with the process's name in front; empty when it ended.
QString quitMessage(const QString& name, QuitRefusal refusal, QuitOutcome outcome);

} // namespace tarvik
