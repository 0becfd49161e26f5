#include "core/sys/process_handle.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarvik::sys {

ProcessHandle ProcessHandle::open(pid_t pid) {
    ProcessHandle h;
    h.fd_ = UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    return h;
}

bool ProcessHandle::signal(int signal) const {
    return ::syscall(SYS_pidfd_send_signal, fd_.get(), signal, nullptr, 0) == 0;
}

bool ProcessHandle::waitForExit(int waitMs) const {
    // The pidfd becomes readable when the process ends.
    pollfd p{fd_.get(), POLLIN, 0};
    return ::poll(&p, 1, waitMs) > 0;
}

} // namespace tarvik::sys
