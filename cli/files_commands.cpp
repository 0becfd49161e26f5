// tarvik large and tarvik dupes: large and old files, and files with identical contents.
#include "cli/cleanup_output.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/output.h"
#include "core/cleanup/duplicate_finder.h"
#include "core/cleanup/exclusion_list.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/sys/xdg_paths.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/whole_number.h"

#include <QDir>
#include <QJsonArray>
#include <cctype>
#include <memory>
#include <sys/stat.h>

namespace tarvik::cli {
namespace {

// "500000", "100MB", "1.5G", "20k": decimal units as file managers count them.
std::optional<std::int64_t> parseSize(const std::string& text) {
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(text, &used);
    } catch (...) {
        return std::nullopt;
    }
    std::string unit = text.substr(used);
    for (char& c : unit) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (!unit.empty() && unit.back() == 'B') {
        unit.pop_back();
    }
    double factor = 1;
    if (unit == "K") {
        factor = 1e3;
    } else if (unit == "M") {
        factor = 1e6;
    } else if (unit == "G") {
        factor = 1e9;
    } else if (unit == "T") {
        factor = 1e12;
    } else if (!unit.empty()) {
        return std::nullopt;
    }
    if (value < 0) {
        return std::nullopt;
    }
    return wholeNumber<std::int64_t>(value * factor);
}

struct SearchOptions {
    std::string root;
    std::string min;
    int olderThan = 0;
    bool includeLibrary = false;
    bool includeHidden = false;
    bool remove = false;
    RemovalOptions removal;
};

// The search as asked, without the user's excluded files and folders.
std::optional<FileSearchOptions> searchOptions(const SearchOptions& o, std::int64_t fallback,
                                               const QString& home) {
    FileSearchOptions s;
    s.root = o.root.empty() ? home : QDir::cleanPath(pathArgument(o.root));
    struct stat st {};
    if (sys::stat(fileName::encode(s.root).c_str(), &st) != 0) {
        printError(QStringLiteral("There is no folder %1.").arg(shownPath(s.root, home)));
        return std::nullopt;
    }
    if (!S_ISDIR(st.st_mode)) {
        printError(QStringLiteral("%1 is not a folder.").arg(shownPath(s.root, home)));
        return std::nullopt;
    }
    const auto min = o.min.empty() ? std::optional(fallback) : parseSize(o.min);
    if (!min) {
        printError(QStringLiteral("--min takes a size such as 500000, 100MB or 1.5G."));
        return std::nullopt;
    }
    s.minimumSize = *min;
    s.includeLibrary = o.includeLibrary;
    s.includeHidden = o.includeHidden;
    s.excluded = CapabilitySettings::exclusions(Preferences(), home).forMatching();
    return s;
}

QJsonObject itemJson(const CleanableItem& item) {
    QJsonObject j;
    j[QStringLiteral("path")] = item.path;
    j[QStringLiteral("size")] = static_cast<double>(item.size);
    j[QStringLiteral("modified")] =
        item.modified ? QJsonValue(item.modified->toUTC().toString(Qt::ISODate)) : QJsonValue();
    return j;
}

int runLarge(const SearchOptions& o) {
    const QString home = xdg::home();
    const auto base = searchOptions(o, 100'000'000, home);
    if (!base) {
        return kExitUsage;
    }
    LargeFileScanner::Options options;
    static_cast<FileSearchOptions&>(options) = *base;
    if (o.olderThan > 0) {
        options.olderThanDays = o.olderThan;
    }
    const std::vector<FoundFile> found = LargeFileScanner(home).scan(options);
    if (o.removal.json) {
        QJsonArray rows;
        for (const auto& f : found) {
            QJsonObject j = itemJson(f.item);
            j[QStringLiteral("kind")] = rawValue(f.kind);
            if (f.item.detail) {
                j[QStringLiteral("note")] = *f.item.detail;
            }
            rows.append(j);
        }
        printJson(QJsonDocument(rows));
        return kExitOk;
    }
    std::int64_t total = 0;
    for (const auto& f : found) {
        total += f.item.size;
        printLine(QStringLiteral("%1  %2  %3")
                      .arg(MetricFormat::bytes(f.item.size), 9)
                      .arg(title(f.kind), -24)
                      .arg(shownPath(f.item.path, home)));
        if (f.item.detail) {
            printLine(QStringLiteral("           ") + *f.item.detail);
        }
    }
    printLine(found.empty() ? QStringLiteral("No files that large.")
                            : QStringLiteral("%1, %2").arg(countOf(found.size(), u"file", u"files"),
                                                           MetricFormat::bytes(total)));
    return kExitOk;
}

void writeGroup(JsonWriter& out, const DuplicateGroup& g) {
    out.beginObject();
    out.key("id");
    out.value(g.id);
    out.key("fileSize");
    out.value(g.fileSize);
    out.key("wastedBytes");
    out.value(g.wastedBytes());
    out.key("files");
    out.beginArray();
    for (std::size_t i = 0; i < g.files.size(); ++i) {
        const CleanableItem& f = g.files[i];
        out.beginObject();
        out.key("path");
        out.value(f.path);
        out.key("size");
        out.value(f.size);
        out.key("modified");
        if (f.modified) {
            out.utcTime(f.modified->toSecsSinceEpoch());
        } else {
            out.null();
        }
        out.key("original");
        out.value(i == 0);
        out.key("freed");
        out.value(g.freed[i]);
        if (f.detail) {
            out.key("note");
            out.value(*f.detail);
        }
        out.endObject();
    }
    out.endArray();
    out.endObject();
}

int runDupes(const SearchOptions& o) {
    const QString home = xdg::home();
    const auto options = searchOptions(o, 1'000'000, home);
    if (!options) {
        return kExitUsage;
    }
    // Held compactly and printed a group at a time: a million files fit in little memory.
    const DuplicateSet found = DuplicateFinder(home).find(*options);
    if (o.remove) {
        const auto mode = chosenMode(o.removal, pref::kFileRemovalMode);
        if (!mode) {
            return kExitUsage;
        }
        CleanupGroup copies{{}, *mode};
        for (std::size_t i = 0; i < found.size(); ++i) {
            const DuplicateGroup g = found.group(i);
            // Every copy but the original, each only while the original is still as found.
            const CleanableItem& original = g.files.front();
            const auto more =
                g.removals([&original](const CleanableItem& f) { return !(f == original); });
            copies.items.insert(copies.items.end(), more.begin(), more.end());
        }
        if (copies.items.empty()) {
            printLine(QStringLiteral("No duplicates to remove."));
            return kExitOk;
        }
        return confirmAndClean({copies}, QStringLiteral("Duplicates"), o.removal,
                               QStringLiteral("The oldest copy of each file is kept."),
                               {options->root});
    }
    if (o.removal.json) {
        std::fflush(stdout);
        JsonWriter out(stdout);
        out.beginArray();
        for (std::size_t i = 0; i < found.size(); ++i) {
            writeGroup(out, found.group(i));
        }
        out.endArray();
        return kExitOk;
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
        const DuplicateGroup g = found.group(i);
        printLine(QStringLiteral("%1 of %2, %3 to gain")
                      .arg(countOf(g.files.size(), u"copy", u"copies"),
                           MetricFormat::bytes(g.fileSize), MetricFormat::bytes(g.wastedBytes())));
        for (std::size_t k = 0; k < g.files.size(); ++k) {
            printLine((k == 0 ? QStringLiteral("  keep    ") : QStringLiteral("  copy    ")) +
                      shownPath(g.files[k].path, home));
            if (g.files[k].detail) {
                printLine(QStringLiteral("          ") + *g.files[k].detail);
            }
        }
    }
    printLine(found.empty() ? QStringLiteral("No duplicates found.")
                            : QStringLiteral("%1, %2 to gain (tarvik dupes --delete)")
                                  .arg(countOf(found.size(), u"group", u"groups"),
                                       MetricFormat::bytes(found.wastedBytes())));
    return kExitOk;
}

void addSearchOptions(CLI::App* cmd, SearchOptions& o, const char* defaultMin) {
    cmd->add_option("ROOT", o.root, "Where to look (default: your home folder)");
    cmd->add_option("--min", o.min,
                    std::string("Smallest size, such as 500000, 100MB or 1.5G (default ") +
                        defaultMin + ")");
    cmd->add_flag(
        "--include-library", o.includeLibrary,
        "Also look in the apps' own data (~/.local, ~/.cache, ~/.config, ~/.var, ~/snap)");
    cmd->add_flag("--include-hidden", o.includeHidden, "Also look at hidden files and folders");
}

} // namespace

void addFilesCommands(CLI::App& app, CommandResult& result) {
    auto large = std::make_shared<SearchOptions>();
    auto* largeCmd = app.add_subcommand("large", "Find large and old files");
    addSearchOptions(largeCmd, *large, "100MB");
    largeCmd
        ->add_option("--older-than", large->olderThan, "Only files unchanged for this many days")
        ->check(CLI::Range(0, 100'000));
    largeCmd->add_flag("--json", large->removal.json, "Print JSON for scripts");
    largeCmd->callback([large, &result] {
        result.run = [large] {
            return runLarge(*large);
        };
    });

    auto dupes = std::make_shared<SearchOptions>();
    auto* dupesCmd = app.add_subcommand("dupes", "Find files with identical contents");
    addSearchOptions(dupesCmd, *dupes, "1MB");
    dupesCmd->add_flag("--delete", dupes->remove,
                       "Remove every copy but the oldest, through the safety guard");
    addRemovalOptions(dupesCmd, dupes->removal, "fileRemovalMode");
    dupesCmd->callback([dupes, &result] {
        result.run = [dupes] {
            return runDupes(*dupes);
        };
    });
}

} // namespace tarvik::cli
