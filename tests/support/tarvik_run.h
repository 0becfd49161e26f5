#pragma once

// Runs the real tarvik executable as a child process with a temporary home, optionally as an
// unprivileged user (through setpriv) when the tests run as root.
#include <QByteArray>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

namespace tarvik::test {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
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
