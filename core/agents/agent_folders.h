#pragma once

#include <filesystem>
#include <vector>

// Where the agents keep their sign-ins and logs, read at call time from the environment.
namespace tarvik::AgentFolders {

std::vector<std::filesystem::path> claude(); // $CLAUDE_CONFIG_DIR, ~/.claude, ~/.config/claude
std::filesystem::path codexHome();           // $CODEX_HOME or ~/.codex

} // namespace tarvik::AgentFolders
