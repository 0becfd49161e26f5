// The agents' log folders and their events, read from real files in a temporary home.
#include "core/agents/spend/local_usage_logs.h"
#include "core/agents/spend/log_lines.h"
#include "tests/support/temp_home.h"

#include <QDateTime>
#include <QDir>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>

using namespace tarvik;
using tarvik::test::TempHome;
using tarvik::test::writeFile;
namespace fs = std::filesystem;

namespace {

// Sets or clears an environment variable for the life of the object.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const QString& value) : name_(name) {
        if (const char* v = std::getenv(name)) {
            saved_ = v;
        }
        if (value.isEmpty()) {
            ::unsetenv(name);
        } else {
            ::setenv(name, value.toLocal8Bit().constData(), 1);
        }
    }
    ~ScopedEnv() {
        if (saved_) {
            ::setenv(name_, saved_->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* name_;
    std::optional<std::string> saved_;
};

QByteArray claudeLine(const char* id, int input) {
    return QStringLiteral(R"({"type":"assistant","requestId":"req_%1","timestamp":)"
                          R"("2025-10-01T09:30:00Z","message":{"id":"%1",)"
                          R"("model":"claude-sonnet-4-5","usage":{"input_tokens":%2}}})")
        .arg(QLatin1String(id))
        .arg(input)
        .toUtf8();
}

QByteArray codexTotals(int input) {
    return QStringLiteral(R"({"timestamp":"2025-10-01T10:00:00Z","type":"event_msg","payload":)"
                          R"({"type":"token_count","info":{"total_token_usage":)"
                          R"({"input_tokens":%1,"cached_input_tokens":0,"output_tokens":0}}}})")
        .arg(input)
        .toUtf8();
}

// (provider, input) of every event, sorted, for comparing whole scans.
std::vector<std::pair<AgentProvider, std::int64_t>> seen(const std::vector<TokenUsageEvent>& e) {
    std::vector<std::pair<AgentProvider, std::int64_t>> out;
    for (const auto& x : e) {
        out.emplace_back(x.provider, x.input);
    }
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace

TEST(LocalUsageLogs, RecentClaudeAndCodexLogsUnderHomeOldAndBrokenFilesSkipped) {
    TempHome home;
    ScopedEnv claudeDir("CLAUDE_CONFIG_DIR", {});
    ScopedEnv codexHome("CODEX_HOME", {});
    const QString h = home.path();
    // Claude Code writes an answer again when a session is resumed, here in the other folder.
    writeFile(h + "/.claude/projects/-work-app/s1.jsonl",
              claudeLine("msg_1", 1) + "\n" + claudeLine("msg_1", 1) + "\n{\"usage\": broken\n" +
                  claudeLine("msg_2", 2)); // the last line has no line break
    writeFile(h + "/.config/claude/projects/-work-app/s2.jsonl",
              claudeLine("msg_1", 1) + "\r\n" + claudeLine("msg_3", 4) + "\r\n");
    writeFile(h + "/.claude/projects/-work-app/notes.txt", claudeLine("msg_9", 900));
    writeFile(h + "/.claude/projects/-work-app/garbage.jsonl", QByteArray("\x00\xff\x01\n", 4));
    fs::create_symlink(h.toStdString() + "/nowhere.jsonl",
                       h.toStdString() + "/.claude/projects/-work-app/gone.jsonl");
    const QString old = h + "/.claude/projects/-old/old.jsonl";
    writeFile(old, claudeLine("msg_old", 800));
    fs::last_write_time(old.toStdString(),
                        fs::file_time_type::clock::now() - std::chrono::hours(72));

    // Totals run per session file: the second file's 300 is all its own.
    writeFile(h + "/.codex/sessions/2025/10/01/rollout-a.jsonl",
              codexTotals(100) + "\n" + codexTotals(250) + "\n");
    writeFile(h + "/.codex/sessions/2025/10/01/rollout-b.jsonl", codexTotals(300) + "\n");

    const QDateTime since = QDateTime::currentDateTimeUtc().addSecs(-3600);
    using P = std::vector<std::pair<AgentProvider, std::int64_t>>;
    EXPECT_EQ(seen(LocalUsageLogs::read(since).events), (P{{AgentProvider::Claude, 1},
                                                           {AgentProvider::Claude, 2},
                                                           {AgentProvider::Claude, 4},
                                                           {AgentProvider::Codex, 100},
                                                           {AgentProvider::Codex, 150},
                                                           {AgentProvider::Codex, 300}}));
    // Without a time limit the old session counts too.
    EXPECT_EQ(seen(LocalUsageLogs::read(QDateTime()).events).size(), 7u);
}

TEST(LocalUsageLogs, FoldersFromTheEnvironmentEachOnce) {
    TempHome home;
    const fs::path h = home.path().toStdString();
    {
        ScopedEnv claudeDir("CLAUDE_CONFIG_DIR", home.path() + "/work-claude");
        ScopedEnv codexHome("CODEX_HOME", home.path() + "/work-codex");
        EXPECT_EQ(LocalUsageLogs::claudeProjectFolders(),
                  (std::vector<fs::path>{h / "work-claude/projects", h / ".claude/projects",
                                         h / ".config/claude/projects"}));
        EXPECT_EQ(LocalUsageLogs::codexSessionsFolder(), h / "work-codex/sessions");
        writeFile(home.path() + "/work-claude/projects/p/s.jsonl", claudeLine("msg_1", 7));
        writeFile(home.path() + "/work-codex/sessions/r.jsonl", codexTotals(9));
        EXPECT_EQ(seen(LocalUsageLogs::read(QDateTime()).events),
                  (std::vector<std::pair<AgentProvider, std::int64_t>>{{AgentProvider::Claude, 7},
                                                                       {AgentProvider::Codex, 9}}));
    }
    ScopedEnv sameAsHome("CLAUDE_CONFIG_DIR", home.path() + "/.claude/");
    ScopedEnv codexHome("CODEX_HOME", {});
    EXPECT_EQ(LocalUsageLogs::claudeProjectFolders().size(), 2u);
    EXPECT_EQ(LocalUsageLogs::codexSessionsFolder(), h / ".codex/sessions");
}

TEST(LogLines, LinesAcrossReadBlocksAndLongerThanABlockComeWhole) {
    TempHome home;
    // Several megabytes: short numbered lines, one line longer than a read block, CRLF endings,
    // and a last line without a break.
    QByteArray text;
    std::vector<QByteArray> expected;
    for (int i = 0; i < 120'000; ++i) {
        expected.push_back(QByteArray::number(i) + QByteArray(i % 7, 'x'));
        if (i == 60'000) {
            expected.push_back(QByteArray(3'000'000, 'y'));
        }
    }
    for (const QByteArray& l : expected) {
        text += l + (l.size() % 2 == 0 ? "\r\n" : "\n");
    }
    expected.push_back("");
    expected.push_back("tail");
    text += "\ntail";
    const QString path = home.path() + "/big.jsonl";
    writeFile(path, text);

    std::vector<QByteArray> lines;
    EXPECT_TRUE(LogLines::forEach(path.toStdString(),
                                  [&](QByteArrayView l) { lines.push_back(l.toByteArray()); }));
    ASSERT_EQ(lines.size(), expected.size());
    EXPECT_TRUE(lines == expected);
    EXPECT_FALSE(LogLines::forEach(home.path().toStdString() + "/missing.jsonl",
                                   [](QByteArrayView) { ADD_FAILURE(); }));
}

TEST(LogLines, MarkersAreFoundWhereverTheyStandAsMemmemFindsThem) {
    // Text full of near misses ("usage" unquoted, quotes five apart), with markers placed at
    // every offset of a 16-byte block and right at the end. Two markers take the 32-byte search
    // where the processor has it; five always take the 16-byte one.
    const std::vector<std::string_view> two = {"\"usage\"", "\"turn_context\""};
    const std::vector<std::string_view> five = {"\"usage\"", "\"turn_context\"", "\"a\"", "uu",
                                                "\"session_meta\""};
    const LogLines::Markers markers{"\"usage\"", "\"turn_context\""};
    const LogLines::Markers fiveMarkers{"\"usage\"", "\"turn_context\"", "\"a\"", "uu",
                                        "\"session_meta\""};
    std::mt19937 random(7);
    const char* pieces[] = {"\"usage\"",
                            "usage",
                            "\"usag\"",
                            "\"u   e\"",
                            "\"turn_context\"",
                            "\"turn_contex\"",
                            "xx",
                            "\"",
                            "e",
                            "u",
                            "\"\"",
                            "\\\"usage\\\"",
                            "\"a",
                            "\"session_meta\""};
    for (int round = 0; round < 400; ++round) {
        std::string text(random() % 80, ' ');
        while (text.size() < 200) {
            text += pieces[random() % std::size(pieces)];
        }
        text.resize(random() % text.size() + 1);
        for (std::size_t from = 0; from <= text.size(); ++from) {
            const char* begin = text.data() + from;
            const char* end = text.data() + text.size();
            for (const bool many : {false, true}) {
                const char* expected = nullptr;
                for (std::string_view m : many ? five : two) {
                    const auto* hit = static_cast<const char*>(
                        ::memmem(begin, static_cast<std::size_t>(end - begin), m.data(), m.size()));
                    if (hit && (!expected || hit < expected)) {
                        expected = hit;
                    }
                }
                ASSERT_EQ((many ? fiveMarkers : markers).find(begin, end), expected)
                    << text << " from " << from << (many ? " (five)" : " (two)");
            }
        }
    }
    EXPECT_TRUE(markers.in("{\"usage\"}"));
    EXPECT_FALSE(markers.in("{\"usage"));
    EXPECT_FALSE(markers.in(""));
    const char* ab = "ab";
    EXPECT_EQ(LogLines::Markers().find(ab, ab + 2), ab); // no markers: every place
}

TEST(LogLines, OnlyTheLinesWithAMarkerComeWholeAcrossReadBlocks) {
    TempHome home;
    // Megabytes of lines, some with a marker: one longer than a read block, one first and one
    // last, without a final line break.
    const LogLines::Markers markers{"\"usage\""};
    QByteArray text = "{\"usage\":1}\n";
    for (int i = 0; i < 60'000; ++i) {
        text += QByteArray::number(i) + (i % 9 == 0 ? " \"usage\" " : " other ") +
                QByteArray(i % 31, 'x') + (i % 2 ? "\r\n" : "\n");
        if (i == 20'000) {
            text += QByteArray(3'000'000, 'y') + "\"usage\"" + QByteArray(10, 'z') + "\n";
        }
    }
    text += "last \"usage\"";
    const QString path = home.path() + "/big.jsonl";
    writeFile(path, text);

    std::vector<QByteArray> all;
    ASSERT_TRUE(LogLines::forEach(path.toStdString(),
                                  [&](QByteArrayView l) { all.push_back(l.toByteArray()); }));
    std::vector<QByteArray> expected;
    std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                 [&](const QByteArray& l) { return markers.in(l); });
    std::vector<QByteArray> lines;
    ASSERT_TRUE(LogLines::forEach(path.toStdString(), markers,
                                  [&](QByteArrayView l) { lines.push_back(l.toByteArray()); }));
    EXPECT_GT(expected.size(), 6'000u);
    EXPECT_TRUE(lines == expected);
    EXPECT_EQ(lines.front(), "{\"usage\":1}");
    EXPECT_EQ(lines.back(), "last \"usage\"");

    // A marker cut by the end of the first block, at each place it can be cut: in a short line,
    // and at the end of a line that began with the file.
    for (const bool shortLine : {true, false}) {
        for (qsizetype cut = 1; cut < 7; ++cut) {
            const auto markerAt = static_cast<qsizetype>(LogLines::kReadBlock) - cut;
            const qsizetype lineStart = shortLine ? markerAt - 40 : 0;
            QByteArray cutText(lineStart, 'a');
            for (qsizetype at = 49; at < lineStart; at += 50) {
                cutText[at] = '\n';
            }
            if (lineStart > 0) {
                cutText[lineStart - 1] = '\n';
            }
            const QByteArray wanted = QByteArray(markerAt - lineStart, 'b') + "\"usage\" cut";
            writeFile(path, cutText + wanted + "\nafter\n");
            lines.clear();
            ASSERT_TRUE(LogLines::forEach(path.toStdString(), markers, [&](QByteArrayView l) {
                lines.push_back(l.toByteArray());
            }));
            ASSERT_EQ(lines.size(), 1u) << "cut after " << cut;
            EXPECT_EQ(lines[0], wanted);
        }
    }

    // An empty file has no lines.
    writeFile(home.path() + "/empty.jsonl", {});
    EXPECT_TRUE(LogLines::forEach((home.path() + "/empty.jsonl").toStdString(), markers,
                                  [](QByteArrayView) { ADD_FAILURE(); }));
}

TEST(LogLines, LinesOfEveryLengthComeAsSplittingTheWholeFileWouldGiveThem) {
    // Random files: mostly short lines, some of tens of kilobytes and some of hundreds, longer
    // than a read block, with markers at their start, middle or end, CRLF endings, and a last
    // line with or without its break. What forEach hands out must equal splitting the whole
    // file and keeping the lines with a marker; every view must have its promised readable
    // bytes after it (the sanitizer build checks the read).
    TempHome home;
    const QString path = home.path() + "/random.jsonl";
    const std::vector<std::string_view> words = {"\"token_count\"", "\"turn_context\"",
                                                 "\"session_meta\""};
    const LogLines::Markers markers{"\"token_count\"", "\"turn_context\"", "\"session_meta\""};
    std::mt19937 random(23);
    for (int round = 0; round < 6; ++round) {
        std::string text;
        while (text.size() < 6'000'000) {
            const unsigned kind = random() % 100;
            const std::size_t length = kind < 90   ? random() % 300
                                       : kind < 97 ? random() % 70'000
                                                   : 200'000 + random() % 500'000;
            std::string line(length, 'x');
            for (char& c : line) {
                c = "ab\"_{}:, "[random() % 9];
            }
            if (random() % 4 == 0) {
                const std::string_view m = words[random() % words.size()];
                const std::size_t at = random() % 3 == 0 ? 0 : random() % (line.size() + 1);
                line.insert(std::min(at, line.size()), m);
            }
            text += line;
            text += random() % 5 == 0 ? "\r\n" : "\n";
        }
        if (round % 2 == 1) {
            text.pop_back(); // the last line without its break
            text += "tail \"token_count\"";
        }
        writeFile(path, QByteArray::fromStdString(text));

        std::vector<std::string> all;
        for (std::size_t from = 0; from <= text.size();) {
            const std::size_t br = std::min(text.find('\n', from), text.size());
            std::string line = text.substr(from, br - from);
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            if (br < text.size() || !line.empty()) {
                all.push_back(line);
            }
            from = br + 1;
        }
        std::vector<std::string> expected;
        std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                     [&](const std::string& l) {
                         return std::any_of(words.begin(), words.end(), [&](std::string_view m) {
                             return l.find(m) != std::string::npos;
                         });
                     });
        for (const bool withMarkers : {true, false}) {
            std::vector<std::string> lines;
            volatile char touched = 0;
            ASSERT_TRUE(LogLines::forEach(
                path.toStdString(), withMarkers ? markers : LogLines::Markers(),
                [&](QByteArrayView l) {
                    touched = l.data()[l.size() + LogLines::kReadableAfterLine - 1];
                    lines.emplace_back(l.data(), l.size());
                }));
            const auto& want = withMarkers ? expected : all;
            ASSERT_EQ(lines.size(), want.size()) << "round " << round;
            for (std::size_t i = 0; i < want.size(); ++i) {
                ASSERT_EQ(lines[i], want[i]) << "round " << round << " line " << i;
            }
        }
    }
}

TEST(LogLines, AFileCutShortWhileItIsReadEndsTheRead) {
    TempHome home;
    // A session log can be rewritten while it is read; what was read stays whole.
    QByteArray text;
    for (int i = 0; i < 200'000; ++i) {
        text += "{\"usage\":" + QByteArray::number(i) + "}\n";
    }
    const QString path = home.path() + "/live.jsonl";
    writeFile(path, text);
    std::vector<QByteArray> lines;
    EXPECT_TRUE(LogLines::forEach(path.toStdString(), LogLines::Markers{"\"usage\""},
                                  [&](QByteArrayView l) {
                                      if (lines.empty()) {
                                          fs::resize_file(path.toStdString(), 100);
                                      }
                                      lines.push_back(l.toByteArray());
                                  }));
    // The lines of the blocks already read, the last one as far as it was read.
    ASSERT_GT(lines.size(), 1u);
    EXPECT_LT(lines.size(), 200'000u);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const QByteArray whole = "{\"usage\":" + QByteArray::number(static_cast<int>(i)) + "}";
        if (i + 1 < lines.size()) {
            EXPECT_EQ(lines[i], whole);
        } else {
            EXPECT_TRUE(whole.startsWith(lines[i])) << lines[i].toStdString();
        }
    }
}

TEST(LocalUsageLogs, FilesChangedBeforeThePeriodAreNeverOpened) {
    TempHome home;
    const ScopedEnv claudeDir("CLAUDE_CONFIG_DIR", QString());
    const ScopedEnv codexDir("CODEX_HOME", QString());
    const QString line = QString(R"({"timestamp":"%1","message":{"id":"m","model":"x",)"
                                 R"("usage":{"input_tokens":1}}})")
                             .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
    const QString recent = home.path() + "/.claude/projects/p/recent.jsonl";
    const QString old = home.path() + "/.claude/projects/p/old.jsonl";
    writeFile(recent, line.toUtf8());
    writeFile(old, line.toUtf8());
    fs::last_write_time(old.toStdString(),
                        fs::file_time_type::clock::now() - std::chrono::hours(24 * 40));
    // The kernel reports every open of a watched file.
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(watch, 0);
    const int recentWatch = inotify_add_watch(watch, recent.toLocal8Bit().constData(), IN_OPEN);
    const int oldWatch = inotify_add_watch(watch, old.toLocal8Bit().constData(), IN_OPEN);
    ASSERT_GE(recentWatch, 0);
    ASSERT_GE(oldWatch, 0);

    EXPECT_EQ(LocalUsageLogs::read(QDateTime::currentDateTime().addDays(-1)).events.size(), 1u);

    std::vector<int> opened;
    alignas(inotify_event) char buffer[4096];
    for (ssize_t n; (n = ::read(watch, buffer, sizeof buffer)) > 0;) {
        for (char* p = buffer; p < buffer + n;) {
            const auto* e = reinterpret_cast<const inotify_event*>(p);
            opened.push_back(e->wd);
            p += sizeof(inotify_event) + e->len;
        }
    }
    ::close(watch);
    EXPECT_NE(std::find(opened.begin(), opened.end(), recentWatch), opened.end());
    EXPECT_EQ(std::find(opened.begin(), opened.end(), oldWatch), opened.end());
}
