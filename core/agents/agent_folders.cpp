#include "core/agents/agent_folders.h"

#include <QByteArray>
#include <QDir>

namespace tarvik::AgentFolders {

std::vector<std::filesystem::path> claude() {
    std::vector<std::filesystem::path> out;
    const QByteArray config = qgetenv("CLAUDE_CONFIG_DIR");
    if (!config.isEmpty()) {
        out.emplace_back(config.toStdString());
    }
    const std::filesystem::path home = QDir::homePath().toStdString();
    out.push_back(home / ".claude");
    out.push_back(home / ".config/claude");
    return out;
}

std::filesystem::path codexHome() {
    const QByteArray env = qgetenv("CODEX_HOME");
    return env.isEmpty() ? std::filesystem::path(QDir::homePath().toStdString()) / ".codex"
                         : std::filesystem::path(env.toStdString());
}

} // namespace tarvik::AgentFolders
