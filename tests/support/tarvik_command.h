#pragma once

// Runs the real tarvik executable as a child process in a temporary home.
#include "tests/support/private_bus.h"
#include "tests/support/tarvik_run.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <map>

namespace tarvik::test {

class TarvikCommand : public ::testing::Test {
protected:
    Outcome tarvik(const QStringList& args, const QString& pathPrefix = {}, int waitMs = 30000) {
        TarvikRun run = run_;
        if (!pathPrefix.isEmpty() && run.env.count("PATH") == 0) {
            run.env["PATH"] = pathPrefix + ":/usr/bin:/bin";
        }
        return run(args, home_.path(), waitMs);
    }
    // Points the child's system and session buses at `bus`, with logind's stand-in on it; false
    // when the machine lacks dbus-daemon or python3-dbusmock.
    bool withMockLogind(PrivateBus& bus) {
        if (!bus.isRunning() || !PrivateBus::hasDbusMock()) {
            return false;
        }
        EXPECT_TRUE(bus.startMock("org.freedesktop.login1", {"--template", "logind"}));
        env_["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address();
        env_["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        return true;
    }
    QString conf() const { return home_.path() + "/.config/Tarvik/Tarvik.conf"; }
    QString folders() const {
        return home_.path() + "/.local/share/Tarvik/DockFolders/folders.json";
    }
    QTemporaryDir home_;
    TarvikRun run_;
    QString& program_ = run_.program;
    std::map<QString, QString>& env_ = run_.env;
    QByteArray& input_ = run_.input;
};

} // namespace tarvik::test
