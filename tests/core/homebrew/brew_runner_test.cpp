#include "core/homebrew/brew_askpass.h"
#include "core/homebrew/brew_runner.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/line_collector.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <thread>

using namespace tarvik;

namespace {

// A stand-in brew in a temporary prefix: a shell script that answers like brew does.
struct StandIn {
    QTemporaryDir dir;
    QString prefix = dir.path() + "/prefix";
    QString brew = prefix + "/bin/brew";
    QString log = dir.path() + "/log";

    explicit StandIn(const QByteArray& body = defaultBody()) {
        QDir().mkpath(prefix + "/bin");
        QFile f(brew);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("#!/bin/bash\nLOG='" + log.toUtf8() + "'\n" + body);
        f.close();
        QFile::setPermissions(brew, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    static QByteArray defaultBody() {
        return R"SH(case "$1" in
  --version) printf 'Homebrew 4.3.5-12-gabc\nHomebrew/homebrew-core (git revision 1)\n' ;;
  env) for v in HOMEBREW_NO_ENV_HINTS HOMEBREW_NO_EMOJI NO_COLOR HOMEBREW_NO_AUTO_UPDATE EXTRA; do
         echo "$v=${!v-unset}"; done
       read -t 1 line; echo "stdin=[$line]"; echo "to stderr" >&2 ;;
  slow) echo "start $2 $(date +%s%N)" >> "$LOG"; sleep "$3"; echo "end $2 $(date +%s%N)" >> "$LOG"; echo "done $2" ;;
  wait) trap 'echo interrupted; exit 130' INT; echo started; for i in $(seq 1 200); do sleep 0.05; done; echo finished ;;
  progress) printf 'abc\r50%%\r100%%\ndone' ;;
  fail) echo "Error: nope"; exit 3 ;;
  hang) echo "thinking"; trap '' INT; sleep 60 ;;
  oneline) head -c "$2" /dev/zero | tr '\0' 'x'; echo ;;
  *) echo "args: $*" ;;
esac
)SH";
    }
    BrewRunner runner() const { return BrewRunner({{brew}, QString()}); }
};

} // namespace

TEST(BrewLocation, CandidatesFirstThenTheSearchPathSkippingEmptyPieces) {
    QTemporaryDir d;
    auto make = [&d](const QString& rel, bool executable) {
        const QString p = d.path() + "/" + rel;
        QDir().mkpath(QFileInfo(p).absolutePath());
        QFile f(p);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("#!/bin/sh\n");
        f.close();
        QFile::setPermissions(p,
                              executable ? QFile::ReadOwner | QFile::ExeOwner : QFile::ReadOwner);
        return p;
    };
    const QString first = make("opt/homebrew/bin/brew", true);
    const QString second = make("usr/local/bin/brew", true);
    const QString onPath = make("usr/bin/brew", true);
    const QString notExecutable = make("nx/brew", false);
    EXPECT_EQ(locateBrew({first, second}, d.path() + "/usr/bin"), first);
    EXPECT_EQ(locateBrew({d.path() + "/missing/brew", second}, std::nullopt), second);
    EXPECT_EQ(locateBrew({notExecutable}, "::" + d.path() + "/nx:" + d.path() + "/usr/bin:"),
              onPath);
    EXPECT_FALSE(locateBrew({}, "::"));
    EXPECT_FALSE(locateBrew({}, std::nullopt));

    EXPECT_EQ(parseBrewVersion("Homebrew 4.3.5-12-gabc\nHomebrew/homebrew-core"), "4.3.5");
    EXPECT_EQ(parseBrewVersion("Homebrew 4.4.0\n"), "4.4.0");
    EXPECT_EQ(parseBrewVersion(""), "");
    EXPECT_EQ(brewPrefix("/opt/homebrew/bin/brew"), "/opt/homebrew");
    const BrewEnvironment env{"/home/linuxbrew/.linuxbrew/bin/brew", "/home/linuxbrew/.linuxbrew",
                              "4.3.5"};
    EXPECT_EQ(env.lockDirectory(), "/home/linuxbrew/.linuxbrew/var/homebrew/locks");
    EXPECT_EQ(env.cellar(), "/home/linuxbrew/.linuxbrew/Cellar");
}

TEST(LineCollector, CarriageReturnsEndLinesAndSplitCharactersWait) {
    QStringList lines;
    LineCollector c([&lines](const QString& l) { lines << l; });
    c.append("abc\r50%\r100%\ndone");
    EXPECT_EQ(lines, (QStringList{"abc", "50%", "100%"}));
    c.flush();
    EXPECT_EQ(lines.last(), "done");
    EXPECT_EQ(c.text(), "abc\n50%\n100%\ndone\n");

    QStringList more;
    LineCollector u([&more](const QString& l) { more << l; });
    const QByteArray word = QString::fromUtf8("Größe ✓").toUtf8();
    u.append(word.left(3)); // cut inside the two bytes of "ö"
    EXPECT_TRUE(more.isEmpty());
    u.append(word.mid(3) + "\n");
    EXPECT_EQ(more, QStringList{QString::fromUtf8("Größe ✓")});
}

TEST(BrewRunner, ChildGetsTheFixedEnvironmentAndMergedOutput) {
    StandIn s;
    qputenv("NO_COLOR", "1");
    BrewRunner r = s.runner();
    const auto quiet = r.run({"env"}, false, {{"EXTRA", "x"}, {"HOMEBREW_NO_EMOJI", "0"}});
    qunsetenv("NO_COLOR");
    EXPECT_TRUE(quiet.succeeded());
    EXPECT_TRUE(quiet.output.contains("HOMEBREW_NO_ENV_HINTS=1\n"));
    EXPECT_TRUE(quiet.output.contains("HOMEBREW_NO_EMOJI=0\n")); // the caller's value wins
    EXPECT_TRUE(quiet.output.contains("NO_COLOR=unset\n"));
    EXPECT_TRUE(quiet.output.contains("HOMEBREW_NO_AUTO_UPDATE=1\n"));
    EXPECT_TRUE(quiet.output.contains("EXTRA=x\n"));
    EXPECT_TRUE(quiet.output.contains("stdin=[]\n"));
    EXPECT_TRUE(quiet.output.contains("to stderr\n"));
    EXPECT_TRUE(r.run({"env"}, true).output.contains("HOMEBREW_NO_AUTO_UPDATE=unset\n"));
    ASSERT_TRUE(r.environment());
    EXPECT_EQ(r.environment()->version, "4.3.5");
    EXPECT_EQ(r.environment()->prefix, s.prefix);

    QStringList lines;
    const auto progress =
        r.run({"progress"}, false, {}, [&lines](const QString& l) { lines << l; });
    EXPECT_EQ(lines, (QStringList{"abc", "50%", "100%", "done"}));
    const auto failed = r.run({"fail"});
    EXPECT_EQ(failed.code, 3);
    EXPECT_FALSE(failed.succeeded());
    try {
        r.json({"fail"});
        FAIL() << "expected BrewError";
    } catch (const BrewError& e) {
        EXPECT_EQ(e, (BrewError{BrewError::Kind::Failed, 3}));
    }
    EXPECT_EQ(r.json({"info", "--json=v2"}), "args: info --json=v2\n");
}

TEST(BrewRunner, CommandsStartedTogetherRunOneAfterTheOtherInArrivalOrder) {
    StandIn s;
    BrewRunner r = s.runner();
    r.resolve();
    auto waitForPending = [&r](std::uint64_t n) {
        for (int i = 0; i < 500 && r.pending() != n; ++i) {
            QThread::msleep(5);
        }
        return r.pending() == n;
    };
    std::thread first([&] { r.run({"slow", "A", "1.0"}); });
    ASSERT_TRUE(waitForPending(1)); // A holds the turn
    std::thread second([&] { r.run({"slow", "B", "0.1"}); });
    ASSERT_TRUE(waitForPending(2)); // B waits behind it
    std::thread third([&] { r.run({"slow", "C", "0.1"}); });
    first.join();
    second.join();
    third.join();
    QFile log(s.log);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    QStringList events;
    std::vector<qint64> times;
    for (const QByteArray& line : log.readAll().split('\n')) {
        const auto parts = line.split(' ');
        if (parts.size() == 3) {
            events << QString::fromUtf8(parts[0] + " " + parts[1]);
            times.push_back(parts[2].toLongLong());
        }
    }
    EXPECT_EQ(events, (QStringList{"start A", "end A", "start B", "end B", "start C", "end C"}));
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_LE(times[i - 1], times[i]);
    }
}

TEST(BrewRunner, CancelInterruptsDrainsAndTheNextCommandRuns) {
    StandIn s;
    BrewRunner r = s.runner();
    r.cancel(); // nothing runs: only remembered until the next command starts
    EXPECT_TRUE(r.run({"hello"}).succeeded());

    QStringList lines;
    std::atomic<bool> started = false;
    std::thread canceller([&] {
        while (!started) {
            QThread::msleep(10);
        }
        r.cancel();
    });
    try {
        r.run({"wait"}, false, {}, [&](const QString& l) {
            lines << l;
            started = started || l == "started";
        });
        ADD_FAILURE() << "expected Cancelled";
    } catch (const BrewError& e) {
        EXPECT_EQ(e.kind, BrewError::Kind::Cancelled);
    }
    canceller.join();
    EXPECT_EQ(lines, (QStringList{"started", "interrupted"})); // brew's own last words arrive
    EXPECT_EQ(r.run({"hello"}).output, "args: hello\n");
}

TEST(BrewRunner, AnAnswerThatNeverComesIsStoppedWithTheReasonAndTheQueueGoesOn) {
    StandIn s;
    BrewRunner r({{s.brew}, QString(), std::chrono::seconds(1)});
    try {
        // It ignores Ctrl-C too: it is made to stop.
        r.answer({"hang"});
        ADD_FAILURE() << "expected TimedOut";
    } catch (const BrewError& e) {
        EXPECT_EQ(e.kind, BrewError::Kind::TimedOut);
        EXPECT_EQ(e.message(), "brew gave no answer for 1 second and was stopped.");
    }
    EXPECT_EQ(BrewError({BrewError::Kind::TimedOut, 120}).message(),
              "brew gave no answer for 2 minutes and was stopped.");
    EXPECT_EQ(r.answer({"hello"}).output, "args: hello\n");
    // Commands that do the work have no such limit.
    EXPECT_EQ(r.run({"slow", "a", "1"}).output, "done a\n");
}

TEST(LineCollector, OneLineOfManyMegabytesArrivingInPiecesIsOneLine) {
    // brew's JSON comes as one line; each piece is looked at once, not the whole line again.
    StandIn s;
    BrewRunner r = s.runner();
    const auto big = r.answer({"oneline", "45000000"});
    ASSERT_EQ(big.output.size(), 45'000'001);
    EXPECT_TRUE(big.output.startsWith("xxx"));
    EXPECT_TRUE(big.output.endsWith("x\n"));
}

TEST(BrewRunner, NoBrewMeansNotInstalledWithTheApplicationsText) {
    BrewRunner r({{"/nonexistent/brew"}, QString()});
    try {
        r.run({"list"});
        FAIL() << "expected NotInstalled";
    } catch (const BrewError& e) {
        EXPECT_EQ(e.kind, BrewError::Kind::NotInstalled);
        EXPECT_EQ(e.message(), "Homebrew isn't installed");
    }
    EXPECT_EQ((BrewError{BrewError::Kind::CouldNotRun}).message(), "Couldn't run brew.");
}

TEST(BrewRunner, BusyMeansAnotherBrewHoldsTheLocks) {
    const QString brew = "/opt/homebrew/bin/brew";
    const auto busy =
        BrewRunner::busyFromPs("    1 10-01:00:00 /sbin/init\n"
                               "  812 01:02:03 /opt/homebrew/bin/brew upgrade --cask foo\n",
                               brew, 4242);
    ASSERT_TRUE(busy);
    EXPECT_EQ(busy->pid, 812);
    EXPECT_EQ(busy->elapsed, "01:02:03");
    EXPECT_EQ(busy->command, "brew upgrade --cask foo");
    EXPECT_FALSE(
        BrewRunner::busyFromPs("900 00:10 /opt/homebrew/bin/brew services start redis\n", brew, 1));
    EXPECT_FALSE(BrewRunner::busyFromPs("812 01:02 /opt/homebrew/bin/brew upgrade\n", brew,
                                        812)); // ourselves
    EXPECT_FALSE(
        BrewRunner::busyFromPs("x 01:02 /opt/homebrew/bin/brew upgrade\n812 01:02\n", brew, 1));
    const auto script = BrewRunner::busyFromPs(
        "77 05:00 /bin/bash /home/linuxbrew/.linuxbrew/Library/Homebrew/brew.rb install x\n", brew,
        1);
    ASSERT_TRUE(script);
    EXPECT_EQ(script->pid, 77);

    StandIn s;
    const BrewEnvironment env{s.brew, s.prefix, "4.3.5"};
    EXPECT_FALSE(BrewRunner::isBusyElsewhere(env)); // no lock folder
    QDir().mkpath(env.lockDirectory());
    EXPECT_FALSE(BrewRunner::isBusyElsewhere(env)); // empty: ps is not even asked
}

TEST(BrewAskpass, ScriptIsWrittenOnceWithOwnerOnlyRightsAndAnswersNothingWhenNoDialogExists) {
    QTemporaryDir d;
    const auto env = BrewAskpass::environment(d.path() + "/Tarvik/Homebrew");
    const QString path = env.value("SUDO_ASKPASS");
    EXPECT_EQ(path, d.path() + "/Tarvik/Homebrew/askpass.sh");
    EXPECT_EQ(QFileInfo(path).permissions() & 0x7777, QFile::ReadOwner | QFile::WriteOwner |
                                                          QFile::ExeOwner | QFile::ReadUser |
                                                          QFile::WriteUser | QFile::ExeUser);
    const QDateTime written = QFileInfo(path).lastModified();
    QThread::msleep(20);
    BrewAskpass::environment(d.path() + "/Tarvik/Homebrew");
    EXPECT_EQ(QFileInfo(path).lastModified(), written); // the same text is not rewritten
    QFile tampered(path);
    ASSERT_TRUE(tampered.open(QIODevice::WriteOnly | QIODevice::Truncate));
    tampered.write("#!/bin/sh\necho hunter2\n");
    tampered.close();
    BrewAskpass::environment(d.path() + "/Tarvik/Homebrew");
    QFile reread(path);
    ASSERT_TRUE(reread.open(QIODevice::ReadOnly));
    EXPECT_EQ(reread.readAll(), BrewAskpass::script().toUtf8());

    // Without any password dialog on the machine, it prints nothing and fails: sudo gives up.
    QProcess p;
    QProcessEnvironment e;
    e.insert("PATH", d.path());
    p.setProcessEnvironment(e);
    p.start("/bin/sh", {path});
    ASSERT_TRUE(p.waitForFinished(5000));
    EXPECT_NE(p.exitCode(), 0);
    EXPECT_TRUE(p.readAllStandardOutput().isEmpty());
}

TEST(BrewCommands, ArgumentListsAreExact) {
    EXPECT_EQ(BrewCommands::upgrade({"a"}, {"b"}, true),
              (QStringList{"upgrade", "--greedy", "a", "b"}));
    EXPECT_EQ(BrewCommands::upgrade({"a"}, {}, false), (QStringList{"upgrade", "--formula", "a"}));
    EXPECT_EQ(BrewCommands::upgrade({}, {"c", "d"}, false),
              (QStringList{"upgrade", "--cask", "c", "d"}));
    EXPECT_EQ(BrewCommands::upgrade({}, {}, false), QStringList{"upgrade"});
    EXPECT_EQ(BrewCommands::outdated(true), (QStringList{"outdated", "--json=v2", "--greedy"}));
    EXPECT_EQ(BrewCommands::installed(), (QStringList{"info", "--json=v2", "--installed"}));
    EXPECT_EQ(BrewCommands::uninstall("x", BrewPackageKind::Formula, true),
              (QStringList{"uninstall", "--formula", "--ignore-dependencies", "x"}));
    EXPECT_EQ(BrewCommands::uninstall("y", BrewPackageKind::Cask, false),
              (QStringList{"uninstall", "--cask", "y"}));
    EXPECT_EQ(BrewCommands::install("z", BrewPackageKind::Cask),
              (QStringList{"install", "--cask", "z"}));
    EXPECT_EQ(BrewCommands::cleanupPreview(), (QStringList{"cleanup", "-n", "--prune=all"}));
    EXPECT_EQ(BrewCommands::orphanPreview(), (QStringList{"autoremove", "-n"}));
    EXPECT_EQ(BrewCommands::removeOrphans({"a", "b"}),
              (QStringList{"uninstall", "--formula", "a", "b"}));
    EXPECT_EQ(BrewCommands::services(), (QStringList{"services", "list", "--json"}));
}
