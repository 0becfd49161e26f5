#include "cli/cleanup_output.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/junk_scanner.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/qt_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <memory>

namespace tarvik::cli {
namespace {

struct JunkOptions {
    bool json = false;
    std::vector<std::string> categories;
    RemovalOptions removal;
};

std::vector<JunkScanResult> scanAll(const Preferences& prefs) {
    const JunkScanner scanner(CapabilitySettings::junkScanner(prefs));
    return scanner.scan({kAllJunkCategories.begin(), kAllJunkCategories.end()});
}

int runList(const JunkOptions& o) {
    const Preferences prefs;
    const auto results = scanAll(prefs);
    const QString home = xdg::home();
    if (o.json) {
        QJsonArray out;
        for (const auto& r : results) {
            QJsonArray items;
            for (const auto& item : r.items) {
                items.append(QJsonObject{{QStringLiteral("path"), item.path},
                                         {QStringLiteral("size"), static_cast<double>(item.size)}});
            }
            out.append(QJsonObject{
                {QStringLiteral("id"), toQString(info(r.category).rawValue)},
                {QStringLiteral("title"), toQString(info(r.category).title)},
                {QStringLiteral("selectedByDefault"), info(r.category).selectedByDefault},
                {QStringLiteral("totalSize"), static_cast<double>(r.totalSize)},
                {QStringLiteral("items"), items}});
        }
        printJson(QJsonDocument(out));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    std::int64_t selected = 0;
    for (const auto& r : results) {
        const auto& i = info(r.category);
        rows.emplace_back(toQString(i.title),
                          QStringLiteral("%1  %2  %3%4")
                              .arg(MetricFormat::bytes(r.totalSize).rightJustified(9))
                              .arg(countOf(r.items.size(), u"item", u"items"), 11)
                              .arg(toQString(i.rawValue))
                              .arg(i.selectedByDefault
                                       ? QString()
                                       : QStringLiteral(" (not cleaned by default)")));
        if (i.selectedByDefault) {
            selected += r.totalSize;
        }
    }
    printRows(rows);
    printLine(QStringLiteral("\n%1 can be cleaned with `tarvik junk clean`.")
                  .arg(MetricFormat::bytes(selected)));
    return kExitOk;
}

int runClean(const JunkOptions& o) {
    const auto mode = chosenMode(o.removal, pref::kJunkRemovalMode);
    if (!mode) {
        return kExitUsage;
    }
    std::vector<JunkCategory> chosen;
    for (const auto& raw : o.categories) {
        const auto c = junkCategoryFromRaw(raw);
        if (!c) {
            printError(
                QStringLiteral("\"%1\" is not a junk category. Run `tarvik junk` to see them.")
                    .arg(QString::fromStdString(raw)));
            return kExitUsage;
        }
        chosen.push_back(*c);
    }
    if (chosen.empty()) {
        for (auto c : kAllJunkCategories) {
            if (info(c).selectedByDefault) {
                chosen.push_back(c);
            }
        }
    }
    const Preferences prefs;
    const auto groups =
        junkCleanupGroups(JunkScanner(CapabilitySettings::junkScanner(prefs)).scan(chosen), *mode);
    if (groups.empty()) {
        printLine(QStringLiteral("No junk found in the chosen categories."));
        return kExitOk;
    }
    return confirmAndClean(groups, QStringLiteral("System Junk"), o.removal,
                           QStringLiteral("Trash contents are always deleted permanently."));
}

} // namespace

void addJunkCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<JunkOptions>();
    auto* cmd = app.add_subcommand("junk", "Find caches, logs and other junk in your home folder");
    cmd->add_flag("--json", o->json, "Print JSON for scripts");
    cmd->callback([o, &result] {
        if (!result.run) {
            result.run = [o] {
                return runList(*o);
            };
        }
    });
    auto* clean = cmd->add_subcommand("clean", "Remove the junk of the chosen categories");
    clean->add_option("--category", o->categories,
                      "Category id (repeat for several; default: those selected by default)");
    addRemovalOptions(clean, o->removal, "junkRemovalMode");
    clean->callback([o, &result] {
        result.run = [o] {
            return runClean(*o);
        };
    });
}

} // namespace tarvik::cli
