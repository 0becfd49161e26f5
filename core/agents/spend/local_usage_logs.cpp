#include "core/agents/spend/local_usage_logs.h"

#include "core/agents/agent_folders.h"
#include "core/agents/spend/claude_log_parser.h"
#include "core/agents/spend/codex_log_parser.h"
#include "core/agents/spend/log_lines.h"
#include "core/sys/file_calls.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <numeric>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <vector>

namespace tarvik::LocalUsageLogs {

std::vector<std::filesystem::path> claudeProjectFolders() {
    std::vector<std::filesystem::path> out;
    std::vector<std::filesystem::path> resolved;
    for (const auto& folder : AgentFolders::claude()) {
        // $CLAUDE_CONFIG_DIR often names ~/.claude itself; its logs are read once.
        std::error_code ec;
        auto real = std::filesystem::weakly_canonical(folder / "projects", ec);
        if (ec) {
            real = (folder / "projects").lexically_normal();
        }
        if (std::find(resolved.begin(), resolved.end(), real) == resolved.end()) {
            resolved.push_back(real);
            out.push_back(folder / "projects");
        }
    }
    return out;
}

std::filesystem::path codexSessionsFolder() {
    return AgentFolders::codexHome() / "sessions";
}

std::vector<LogFile> logFiles(const std::filesystem::path& folder, const QDateTime& since) {
    using namespace std::chrono;
    const bool everything = !since.isValid();
    const auto threshold =
        everything
            ? file_clock::time_point::min()
            : file_clock::from_sys(sys_time<milliseconds>(milliseconds(since.toMSecsSinceEpoch())));
    std::vector<LogFile> out;
    std::error_code ec;
    const auto options = std::filesystem::directory_options::skip_permission_denied;
    for (auto it = std::filesystem::recursive_directory_iterator(folder, options, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (it->path().extension() != ".jsonl") {
            continue;
        }
        // One stat for kind, age and size. Old sessions are passed over by their time stamp,
        // without being opened.
        struct stat st {};
        if (sys::stat(it->path().c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
            continue;
        }
        const auto changed = file_clock::from_sys(
            sys_time<nanoseconds>(seconds(st.st_mtim.tv_sec) + nanoseconds(st.st_mtim.tv_nsec)));
        if (everything || changed >= threshold) {
            out.push_back({it->path(), static_cast<std::uintmax_t>(st.st_size)});
        }
    }
    return out;
}

Found read(const QDateTime& since) {
    // Files are read on every core, largest first so no thread is left with a long one at the
    // end; repeats are then dropped in the order the files were listed, as one reader would.
    std::vector<LogFile> claudeFiles;
    for (const auto& folder : claudeProjectFolders()) {
        auto files = logFiles(folder, since);
        std::move(files.begin(), files.end(), std::back_inserter(claudeFiles));
    }
    const auto codexFiles = logFiles(codexSessionsFolder(), since);
    // A file's answers, with their ids one after another in one string.
    struct ClaudeAnswers {
        std::vector<TokenUsageEvent> events;
        std::string ids;
        std::vector<std::pair<std::size_t, std::size_t>> idLengths; // message, request
    };
    std::vector<ClaudeAnswers> answers(claudeFiles.size());
    std::vector<std::vector<TokenUsageEvent>> codexEvents(codexFiles.size());
    std::atomic<std::int64_t> skipped = 0;
    const std::size_t total = claudeFiles.size() + codexFiles.size();
    auto sizeOf = [&](std::size_t i) {
        return i < claudeFiles.size() ? claudeFiles[i].size
                                      : codexFiles[i - claudeFiles.size()].size;
    };
    std::vector<std::size_t> order(total);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return sizeOf(a) > sizeOf(b); });
    std::atomic<std::size_t> next = 0;
    auto work = [&] {
        for (std::size_t n; (n = next++) < total;) {
            const std::size_t i = order[n];
            if (i < claudeFiles.size()) {
                ClaudeAnswers& file = answers[i];
                skipped +=
                    LogLines::forEach(claudeFiles[i].path, ClaudeLogParser::markers(),
                                      [&](QByteArrayView line) {
                                          if (auto a = ClaudeLogParser::answer(
                                                  line, LogLines::kReadableAfterLine)) {
                                              file.events.push_back(std::move(a->event));
                                              file.ids.append(a->messageId).append(a->requestId);
                                              file.idLengths.emplace_back(a->messageId.size(),
                                                                          a->requestId.size());
                                          }
                                      })
                        .skippedLines;
            } else {
                const std::size_t k = i - claudeFiles.size();
                CodexLogParser codex; // totals run per session file
                skipped += LogLines::forEach(
                               codexFiles[k].path, CodexLogParser::markers(),
                               [&](QByteArrayView line) {
                                   if (auto e = codex.event(line, LogLines::kReadableAfterLine)) {
                                       codexEvents[k].push_back(std::move(*e));
                                   }
                               })
                               .skippedLines;
            }
        }
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, 8U);
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads && t < total; ++t) {
        pool.emplace_back(work);
    }
    work();
    for (auto& t : pool) {
        t.join();
    }
    std::size_t found = 0;
    for (const ClaudeAnswers& file : answers) {
        found += file.events.size();
    }
    for (const auto& file : codexEvents) {
        found += file.size();
    }
    std::vector<TokenUsageEvent> out;
    out.reserve(found);
    ClaudeLogParser claude(found); // one for all files: repeats across sessions count once
    for (ClaudeAnswers& file : answers) {
        std::string_view ids = file.ids;
        for (std::size_t e = 0; e < file.events.size(); ++e) {
            const auto [idLength, requestLength] = file.idLengths[e];
            if (claude.firstTime(ids.substr(0, idLength), ids.substr(idLength, requestLength))) {
                out.push_back(std::move(file.events[e]));
            }
            ids.remove_prefix(idLength + requestLength);
        }
    }
    for (auto& file : codexEvents) {
        std::move(file.begin(), file.end(), std::back_inserter(out));
    }
    return {std::move(out), skipped.load()};
}

} // namespace tarvik::LocalUsageLogs
