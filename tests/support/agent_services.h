#pragma once

// The agents' services pointed at one local server for the life of the object, with no keyring
// on the session bus.
#include "tests/support/scripted_server.h"

#include <QByteArray>
#include <map>
#include <vector>

namespace tarvik::test {

struct AgentServices {
    ScriptedServer server;
    std::vector<QByteArray> names = {"TARVIK_CLAUDE_API", "TARVIK_CODEX_API", "TARVIK_COPILOT_API",
                                     "TARVIK_OPENROUTER_API", "DBUS_SESSION_BUS_ADDRESS"};
    std::map<QByteArray, QByteArray> saved;
    AgentServices() {
        for (const auto& n : names) {
            saved[n] = qgetenv(n.constData());
            qputenv(n.constData(), server.url().toString().toUtf8());
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); // no keyring here
    }
    ~AgentServices() {
        for (const auto& [n, v] : saved) {
            if (v.isEmpty()) {
                qunsetenv(n.constData());
            } else {
                qputenv(n.constData(), v);
            }
        }
    }
    AgentServices(const AgentServices&) = delete;
    AgentServices& operator=(const AgentServices&) = delete;
};

} // namespace tarvik::test
