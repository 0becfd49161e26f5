#pragma once

#include "core/sys/directory_handle.h"

#include <sys/types.h>

namespace tarvik::sys {

// A handle on one process (a pidfd): a signal sent through it reaches that process and never a
// newcomer that took its pid.
class ProcessHandle {
public:
    // Invalid when the process is gone or the kernel has no pidfds.
    static ProcessHandle open(pid_t pid);
    bool valid() const { return fd_.valid(); }
    bool signal(int signal) const;
    // Waits up to `waitMs` for the process to end; true when it has.
    bool waitForExit(int waitMs) const;

private:
    UniqueFd fd_;
};

} // namespace tarvik::sys
