#include "core/monitor/process_control.h"

#include "core/sys/process_handle.h"
#include "core/sys/system_files.h"
#include "core/text/platform_words.h"

#include <array>
#include <csignal>
#include <unistd.h>

namespace tarvik {

namespace ProcessGuard {

bool isProtectedName(std::string_view name) {
    static constexpr std::array<std::string_view, 31> kNames = {
        // Named after the services of the platform the product started on; kept so that a
        // process by these names is never quit here either.
        "kernel_task", "launchd", "WindowServer", "loginwindow", "systemstats", "opendirectoryd",
        "securityd", "trustd", "coreservicesd", "UserEventAgent", "cfprefsd", "distnoted",
        // Linux: without these the session or the system ends.
        "init", "systemd", "kthreadd", "Xorg", "Xwayland", "gnome-shell", "kwin_wayland",
        "kwin_x11", "plasmashell", "dbus-daemon", "dbus-broker", "systemd-logind", "gdm", "gdm3",
        "sddm", "lightdm", "pipewire", "wireplumber", "X"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

QuitRefusal refusal(const ProcessUsage& process, std::int32_t ownPid, uid_t ownUid) {
    if (process.pid < 2 || process.pid == ownPid || process.kernelThread) {
        return QuitRefusal::PartOfSystem;
    }
    if (isProtectedName(process.name)) {
        return QuitRefusal::PartOfSystem;
    }
    if (process.path) {
        const auto slash = process.path->rfind('/');
        if (isProtectedName(std::string_view(*process.path).substr(slash + 1))) {
            return QuitRefusal::PartOfSystem;
        }
    }
    if (ownUid != 0 && process.uid != ownUid) {
        return QuitRefusal::OtherUser;
    }
    return QuitRefusal::None;
}

bool canQuit(const ProcessUsage& process, std::int32_t ownPid, uid_t ownUid) {
    return refusal(process, ownPid, ownUid) == QuitRefusal::None;
}

} // namespace ProcessGuard

namespace ProcessControl {
namespace {

// The start time in /proc/<pid>/stat, to tell the listed process from a later one that got
// the same pid.
std::optional<std::uint64_t> startTimeOf(const std::filesystem::path& root, std::int32_t pid) {
    const auto text = platform::readSmallFile(root / "proc" / std::to_string(pid), "stat");
    if (!text) {
        return std::nullopt;
    }
    const auto stat = parseProcessStat(*text);
    return stat ? std::optional(stat->startTime) : std::nullopt;
}

} // namespace

QuitOutcome quit(const ProcessUsage& process, bool force, int waitMs,
                 const std::filesystem::path& root) {
    if (!ProcessGuard::canQuit(process, getpid(), geteuid())) {
        return QuitOutcome::Refused;
    }
    // A pidfd holds on to this very process: once it is open and the start time still
    // matches, the signal can't reach a newcomer with the same pid.
    const sys::ProcessHandle handle = sys::ProcessHandle::open(process.pid);
    if (!handle.valid()) {
        return QuitOutcome::Failed;
    }
    if (startTimeOf(root, process.pid) != process.startTime) {
        return QuitOutcome::Failed; // it had already ended
    }
    if (!handle.signal(force ? SIGKILL : SIGTERM)) {
        return QuitOutcome::Failed;
    }
    return handle.waitForExit(waitMs) ? QuitOutcome::Ended : QuitOutcome::NotResponding;
}

} // namespace ProcessControl

QString processLabel(const QString& name, std::int32_t pid) {
    return QStringLiteral("“%1” (PID %2)").arg(name).arg(pid);
}

QString quitMessage(const QString& name, QuitRefusal refusal, QuitOutcome outcome) {
    switch (refusal) {
    case QuitRefusal::PartOfSystem:
        return name + QStringLiteral(" is part of ") + words::theSystem() +
               QStringLiteral(" and can't be quit from here.");
    case QuitRefusal::OtherUser:
        return name + QStringLiteral(" belongs to another user and can't be quit from here.");
    case QuitRefusal::None:
        break;
    }
    switch (outcome) {
    case QuitOutcome::Ended:
    case QuitOutcome::Refused:
        return {};
    case QuitOutcome::NotResponding:
    case QuitOutcome::Failed:
        return name + QStringLiteral(" didn't respond. Try Force Quit.");
    }
    return {};
}

} // namespace tarvik
