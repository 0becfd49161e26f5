#pragma once

// A private X server (Xvfb) for tests that run real programs with windows, and xdotool to
// drive them as a person would.
#include "tests/support/wait.h"

#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace tarvik::test {

class XDisplay {
public:
    // Whether Xvfb and xdotool are installed; the reason to skip when not.
    static QString missingTools() {
        for (const char* tool : {"Xvfb", "xdotool"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
                return QStringLiteral("%1 is not installed").arg(QLatin1String(tool));
            }
        }
        return {};
    }

    XDisplay() {
        // -displayfd picks a free display and writes its number to our end of the pipe.
        server_.start(QStringLiteral("Xvfb"),
                      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                       QStringLiteral("0"), QStringLiteral("1280x800x24"),
                       QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        waitUntil([&] { return server_.canReadLine() || server_.state() == QProcess::NotRunning; });
        const QByteArray number = server_.readLine().trimmed();
        if (!number.isEmpty()) {
            name_ = QStringLiteral(":") + QString::fromLatin1(number);
        }
    }
    ~XDisplay() {
        server_.terminate();
        server_.waitForFinished(5000);
    }
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;

    // ":N", or empty when the server didn't start.
    QString name() const { return name_; }

    struct Result {
        int exitCode = -1;
        QString out;
    };
    // Runs xdotool on this display; one that has not finished in 20 s is stopped and fails.
    Result xdotool(const QStringList& args) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), name_);
        p.setProcessEnvironment(env);
        p.start(QStringLiteral("xdotool"), args);
        if (!p.waitForFinished(20000)) {
            p.kill();
            p.waitForFinished();
            return {};
        }
        return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput())};
    }

private:
    QProcess server_;
    QString name_;
};

} // namespace tarvik::test
