#pragma once

// Runs the real tarvik executable as a child process with a temporary home, optionally as an
// unprivileged user (through setpriv) when the tests run as root.
#include "tests/support/temp_home.h"

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tarvik::test {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
    long peakKiB = -1; // the child's peak resident memory, when measured
};

// The user an unprivileged run uses when the tests run as root.
constexpr uid_t kNobody = 65534;

struct TarvikRun {
    QString program = TARVIK_BINARY;
    QStringList prefix;             // arguments before the command's own (when program runs tarvik)
    std::map<QString, QString> env; // added to the child's environment
    QByteArray input;               // the child's standard input, when not empty
    QString workingDirectory;

    // Runs as `kNobody` from now on when the tests run as root; false when setpriv is missing.
    bool asUnprivilegedUser() {
        if (::geteuid() != 0) {
            return true;
        }
        program = QStandardPaths::findExecutable("setpriv");
        if (program.isEmpty()) {
            return false;
        }
        prefix = {"--reuid=65534", "--regid=65534", "--clear-groups", TARVIK_BINARY};
        return true;
    }
    // The user the child runs as.
    static uid_t childUid() { return ::geteuid() == 0 ? kNobody : ::geteuid(); }

    // Runs the command and reads its peak memory (getrusage of that child alone, through wait4).
    Outcome measured(const QStringList& args, const QString& home) const {
        QTemporaryDir dir;
        const QByteArray outPath = QFile::encodeName(dir.path() + "/out");
        const QByteArray errPath = QFile::encodeName(dir.path() + "/err");
        std::vector<QByteArray> argv8{QFile::encodeName(program)};
        for (const QString& a : prefix + args) {
            argv8.push_back(a.toUtf8());
        }
        std::vector<char*> argv;
        for (QByteArray& a : argv8) {
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        std::map<QString, QString> all = env;
        all.emplace("HOME", home);
        all.emplace("XDG_CONFIG_HOME", home + "/.config");
        all.emplace("XDG_DATA_HOME", home + "/.local/share");
        std::vector<QByteArray> env8;
        for (const QString& kept : {QStringLiteral("PATH"), QStringLiteral("ASAN_OPTIONS"),
                                    QStringLiteral("UBSAN_OPTIONS"), QStringLiteral("LANG")}) {
            if (all.count(kept) == 0 && qEnvironmentVariableIsSet(kept.toUtf8().constData())) {
                all[kept] = qEnvironmentVariable(kept.toUtf8().constData());
            }
        }
        for (const auto& [name, value] : all) {
            env8.push_back((name + "=" + value).toUtf8());
        }
        std::vector<char*> envp;
        for (QByteArray& e : env8) {
            envp.push_back(e.data());
        }
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, outPath.constData(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, errPath.constData(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t pid = -1;
        Outcome o;
        if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) == 0) {
            int status = 0;
            struct rusage usage {};
            if (::wait4(pid, &status, 0, &usage) == pid) {
                o.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
                o.peakKiB = usage.ru_maxrss;
            }
        }
        posix_spawn_file_actions_destroy(&actions);
        o.out = QString::fromUtf8(readAll(dir.path() + "/out"));
        o.err = QString::fromUtf8(readAll(dir.path() + "/err"));
        return o;
    }

    Outcome operator()(const QStringList& args, const QString& home, int waitMs = 60000) const {
        QProcess p;
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert("HOME", home);
        e.insert("XDG_CONFIG_HOME", home + "/.config");
        e.insert("XDG_DATA_HOME", home + "/.local/share");
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_CACHE_HOME",
                                 "XDG_STATE_HOME"}) {
            e.remove(name); // headless: no window may open
        }
        for (const auto& [name, value] : env) {
            e.insert(name, value);
        }
        p.setProcessEnvironment(e);
        if (!workingDirectory.isEmpty()) {
            p.setWorkingDirectory(workingDirectory);
        }
        if (input.isEmpty()) {
            p.setStandardInputFile(QProcess::nullDevice());
        }
        p.start(program, prefix + args);
        if (!input.isEmpty()) {
            p.write(input);
            p.closeWriteChannel();
        }
        if (!p.waitForFinished(waitMs)) {
            p.kill();
            p.waitForFinished();
            ADD_FAILURE() << "tarvik " << args.join(' ').toStdString() << " did not finish";
        }
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAllStandardOutput()),
                QString::fromUtf8(p.readAllStandardError())};
    }
};

} // namespace tarvik::test
