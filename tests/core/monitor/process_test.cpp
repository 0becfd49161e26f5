// Processes: reading /proc, CPU shares between samples, who may be quit, and quitting.
#include "core/monitor/process_control.h"
#include "core/monitor/process_order.h"
#include "core/monitor/process_sample.h"
#include "core/monitor/process_tracker.h"
#include "tests/support/fixture_tree.h"

#include <QProcess>
#include <QThread>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace tarvik;

namespace {

const std::filesystem::path kFixtures = TARVIK_FIXTURES;

ProcessSample sample(std::int32_t pid, std::uint64_t cpuNs, std::uint64_t start = 100) {
    ProcessSample s;
    s.pid = pid;
    s.name = "p" + std::to_string(pid);
    s.cpuTime = cpuNs;
    s.startTime = start;
    return s;
}

ProcessUsage usage(std::int32_t pid, std::string name, std::optional<std::string> path = {},
                   std::uint32_t uid = geteuid()) {
    ProcessUsage u;
    u.pid = pid;
    u.name = std::move(name);
    u.path = std::move(path);
    u.uid = uid;
    return u;
}

// A child that the test owns; `ignoreTerm` makes it shrug off SIGTERM.
struct Child {
    QProcess process;
    explicit Child(bool ignoreTerm = false) {
        process.start(QStringLiteral("/bin/sh"),
                      {QStringLiteral("-c"), ignoreTerm
                                                 ? QStringLiteral("trap '' TERM; echo ready; "
                                                                  "while :; do sleep 0.05; done")
                                                 : QStringLiteral("echo ready; exec sleep 30")});
        process.waitForReadyRead(5000); // the trap is set before the line is written
    }
    std::int32_t pid() const { return static_cast<std::int32_t>(process.processId()); }
    ~Child() {
        process.kill();
        process.waitForFinished(3000);
    }
};

ProcessUsage listed(std::int32_t pid) {
    for (const auto& s : readProcesses()) {
        if (s.pid == pid) {
            ProcessTracker tracker;
            return tracker.update({s}, 1).front();
        }
    }
    ADD_FAILURE() << "pid " << pid << " not listed";
    return {};
}

} // namespace

TEST(ProcessStat, NamesWithSpacesAndParenthesesAndRealCaptures) {
    const auto tricky = parseProcessStat(
        "42 (tmux: a) b)) S 1 42 42 0 -1 4194560 0 0 0 0 250 50 0 0 20 0 1 0 9000 0 300 "
        "18446744073709551615 0\n");
    ASSERT_TRUE(tricky);
    EXPECT_EQ(tricky->name, "tmux: a) b)");
    EXPECT_EQ(tricky->parentPid, 1);
    EXPECT_EQ(tricky->userTicks, 250u);
    EXPECT_EQ(tricky->systemTicks, 50u);
    EXPECT_EQ(tricky->startTime, 9000u);
    EXPECT_EQ(tricky->residentPages, 300u);
    EXPECT_FALSE(tricky->kernelThread());

    EXPECT_FALSE(parseProcessStat("42 (short) S 1 2 3\n"));
    EXPECT_FALSE(parseProcessStat("no parentheses at all"));
    EXPECT_FALSE(parseProcessStat("42 (x) S 1 42 42 0 -1 flags 0 0 0 0 1 1 0 0 20 0 1 0 9 0 3"));
}

TEST(ProcessReader, ReadsACapturedTreeAndSkipsWhatVanished) {
    // Real captures: vim from the procfs project, kthreadd and a kernel worker from our own VM.
    test::FixtureTree tree;
    std::filesystem::create_directories(tree.root() / "proc");
    std::filesystem::copy(kFixtures / "linux/procfs/proc/26231", tree.root() / "proc/26231",
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::copy_symlinks);
    for (const char* pid : {"1", "2", "3"}) {
        std::filesystem::copy(kFixtures / "linux/debian12-vm/proc" / pid,
                              tree.root() / "proc" / pid, std::filesystem::copy_options::recursive);
    }
    tree.write("proc/777/cmdline", "");             // ended between listing and reading
    tree.write("proc/self/stat", "1 (fake) S 0 0"); // not a pid folder
    tree.write("proc/0042/stat", "");               // not a pid name the kernel writes

    auto processes = readProcesses({tree.root(), 100, 4096});
    std::sort(processes.begin(), processes.end(),
              [](const auto& a, const auto& b) { return a.pid < b.pid; });
    ASSERT_EQ(processes.size(), 4u);
    EXPECT_EQ(processes[0].name, "process_api");
    EXPECT_FALSE(processes[0].kernelThread);
    EXPECT_EQ(processes[1].name, "kthreadd");
    EXPECT_TRUE(processes[1].kernelThread);
    EXPECT_FALSE(processes[1].path);
    EXPECT_TRUE(processes[2].kernelThread);
    const ProcessSample& vim = processes[3];
    EXPECT_EQ(vim.pid, 26231);
    EXPECT_EQ(vim.name, "vim");
    EXPECT_EQ(vim.cpuTime, (1677ULL + 44ULL) * 10'000'000ULL); // ticks of 10 ms
    EXPECT_EQ(vim.memory, 1981ULL * 4096ULL);
    EXPECT_EQ(vim.startTime, 82375u);
    EXPECT_EQ(vim.parentPid, 5392);
}

TEST(ProcessReader, TheLiveSystemShowsThisProcessAndAChildWithFullNames) {
    const auto processes = readProcesses();
    const auto self = std::find_if(processes.begin(), processes.end(),
                                   [](const auto& p) { return p.pid == getpid(); });
    ASSERT_NE(self, processes.end());
    EXPECT_EQ(self->uid, geteuid());
    ASSERT_TRUE(self->path);
    EXPECT_EQ(*self->path, std::filesystem::read_symlink("/proc/self/exe").string());
    // The kernel cuts names at 15 bytes; the executable's file name gives the whole one.
    EXPECT_EQ(self->name, std::filesystem::path(*self->path).filename().string());
    EXPECT_GT(self->memory, 0u);
    EXPECT_GT(self->cpuTime, 0u);
}

TEST(ProcessTracker, SharesBetweenSamplesKnowAReusedPid) {
    ProcessTracker tracker;
    const std::int64_t second = 1'000'000'000;
    auto first = tracker.update({sample(10, 5 * second), sample(11, 0)}, 100 * second);
    EXPECT_EQ(first[0].cpuPercent, 0.0); // nothing to compare with yet

    // Two cores busy for the whole interval: 200, not clamped.
    auto next = tracker.update({sample(10, 7 * second), sample(11, second / 2)}, 101 * second);
    EXPECT_DOUBLE_EQ(next[0].cpuPercent, 200.0);
    EXPECT_DOUBLE_EQ(next[1].cpuPercent, 50.0);

    // Pid 10 now belongs to a new process (another start time); CPU time that went back.
    auto reused = tracker.update({sample(10, 9 * second, 555), sample(11, 0)}, 102 * second);
    EXPECT_EQ(reused[0].cpuPercent, 0.0);
    EXPECT_EQ(reused[1].cpuPercent, 0.0);

    // A clock that did not move gives no shares; ended processes are forgotten.
    EXPECT_EQ(tracker.update({sample(10, 10 * second, 555)}, 102 * second)[0].cpuPercent, 0.0);
    EXPECT_DOUBLE_EQ(
        tracker.update({sample(10, 11 * second, 555), sample(11, second)}, 103 * second)[0]
            .cpuPercent,
        100.0);
}

TEST(ProcessTable, SortsAndSumsMemory) {
    std::vector<ProcessUsage> list = {usage(5, "beta"), usage(3, "Alpha"), usage(9, "gamma")};
    list[0].cpuPercent = 10;
    list[1].cpuPercent = 30;
    list[2].cpuPercent = 10;
    list[0].memory = 300;
    list[1].memory = 100;
    list[2].memory = 200;
    sortProcesses(list, ProcessSort::CPU);
    EXPECT_EQ(list[0].pid, 3);
    EXPECT_EQ(list[1].pid, 5); // equal shares: lower pid first
    sortProcesses(list, ProcessSort::Memory);
    EXPECT_EQ(list[0].pid, 5);
    sortProcesses(list, ProcessSort::Name);
    EXPECT_EQ(list[0].name, "Alpha"); // case does not order
    EXPECT_EQ(totalProcessMemory(list), 600u);
    EXPECT_EQ(processSortFromKey("memory"), ProcessSort::Memory);
    EXPECT_FALSE(processSortFromKey("size"));
}

TEST(ProcessGuard, RefusesTheSystemItselfAndOtherUsers) {
    const uid_t me = 1000;
    const std::int32_t own = 4242;
    auto check = [&](const ProcessUsage& p, uid_t asUid = 1000) {
        return ProcessGuard::refusal(p, own, asUid);
    };
    EXPECT_EQ(check(usage(0, "swapper", {}, me)), QuitRefusal::PartOfSystem);
    EXPECT_EQ(check(usage(1, "bash", {}, me)), QuitRefusal::PartOfSystem);
    EXPECT_EQ(check(usage(own, "tarvik", {}, me)), QuitRefusal::PartOfSystem);
    EXPECT_EQ(check(usage(300, "launchd", {}, me)), QuitRefusal::PartOfSystem);
    // The executable's file name counts, whatever the shown name.
    EXPECT_EQ(check(usage(301, "Renamed", "/System/WindowServer", me)), QuitRefusal::PartOfSystem);
    EXPECT_EQ(check(usage(302, "gnome-shell", "/usr/bin/gnome-shell", me)),
              QuitRefusal::PartOfSystem);
    EXPECT_EQ(check(usage(303, "systemd", "/usr/lib/systemd/systemd", me)),
              QuitRefusal::PartOfSystem); // the user's own service manager ends the session
    ProcessUsage worker = usage(304, "kworker/0:1", {}, 0);
    worker.kernelThread = true;
    EXPECT_EQ(check(worker, 0), QuitRefusal::PartOfSystem); // even for root

    EXPECT_EQ(check(usage(305, "firefox", "/usr/lib/firefox/firefox", 1001)),
              QuitRefusal::OtherUser);
    EXPECT_EQ(check(usage(305, "firefox", "/usr/lib/firefox/firefox", 1001), 0),
              QuitRefusal::None); // root may
    EXPECT_EQ(check(usage(306, "firefox", "/usr/lib/firefox/firefox", me)), QuitRefusal::None);

    EXPECT_EQ(quitMessage("gnome-shell", QuitRefusal::PartOfSystem, QuitOutcome::Refused),
              "gnome-shell is part of the system and can't be quit from here.");
    EXPECT_EQ(quitMessage("Firefox", QuitRefusal::None, QuitOutcome::NotResponding),
              "Firefox didn't respond. Try Force Quit.");
    EXPECT_TRUE(quitMessage("x", QuitRefusal::OtherUser, QuitOutcome::Refused)
                    .endsWith("belongs to another user and can't be quit from here."));
}

TEST(ProcessControl, QuitsForceQuitsAndNeverHitsAReusedPid) {
    Child polite;
    ASSERT_GT(polite.pid(), 0);
    EXPECT_EQ(ProcessControl::quit(listed(polite.pid()), false), QuitOutcome::Ended);

    Child stubborn(true);
    const ProcessUsage target = listed(stubborn.pid());
    EXPECT_EQ(ProcessControl::quit(target, false, 300), QuitOutcome::NotResponding);
    EXPECT_EQ(stubborn.process.state(), QProcess::Running);
    EXPECT_EQ(ProcessControl::quit(target, true), QuitOutcome::Ended);

    // The listing's process has gone and its pid is taken by another start time: nothing sent.
    Child bystander;
    ProcessUsage stale = listed(bystander.pid());
    stale.startTime += 1;
    EXPECT_EQ(ProcessControl::quit(stale, true), QuitOutcome::Failed);
    EXPECT_EQ(bystander.process.state(), QProcess::Running);

    // The guard comes first: this very process is never signalled.
    EXPECT_EQ(ProcessControl::quit(listed(getpid()), true), QuitOutcome::Refused);
}
