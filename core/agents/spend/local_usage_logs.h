#pragma once

#include "core/agents/spend/token_usage.h"

#include <QDateTime>
#include <cstdint>
#include <filesystem>
#include <vector>

// The token counts Claude Code and Codex keep in their logs on this machine, for the cost
// estimate. Folders are worked out from the environment at each call.
namespace tarvik::LocalUsageLogs {

// "projects" in each of Claude Code's folders ($CLAUDE_CONFIG_DIR, ~/.claude, ~/.config/claude),
// each once; missing ones included.
std::vector<std::filesystem::path> claudeProjectFolders();
// "sessions" in $CODEX_HOME or ~/.codex.
std::filesystem::path codexSessionsFolder();
struct LogFile {
    std::filesystem::path path;
    std::uintmax_t size = 0; // bytes, when listed
};
// The ".jsonl" files anywhere under `folder` last changed at or after `since` (all of them when
// `since` is invalid). A missing or unreadable folder has none.
std::vector<LogFile> logFiles(const std::filesystem::path& folder, const QDateTime& since);
struct Found {
    std::vector<TokenUsageEvent> events;
    std::int64_t skippedLines = 0; // lines too long to read (LogLines::kLongestLine)
};
// Every Claude Code and Codex event in the logs changed since `since`. A file holds events from
// before its last change, so the caller still picks events by date.
Found read(const QDateTime& since);

} // namespace tarvik::LocalUsageLogs
