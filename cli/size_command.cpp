#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/directory_sizer.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/sys/xdg_paths.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <memory>
#include <sys/stat.h>

namespace tarvik::cli {
namespace {

struct SizeOptions {
    std::vector<std::string> paths;
    bool json = false;
};

int runSize(const SizeOptions& o) {
    const DirectorySizer sizer;
    const QString home = xdg::home();
    QJsonArray out;
    std::vector<std::pair<QString, QString>> rows;
    int status = kExitOk;
    for (const auto& p : o.paths) {
        const QString path = QDir::cleanPath(pathArgument(p));
        struct stat st {};
        if (sys::lstat(fileName::encode(path).c_str(), &st) != 0) {
            printError(QStringLiteral("%1 does not exist.").arg(shownPath(path, home)));
            status = kExitFailed;
            continue;
        }
        const SizeResult r = sizer.measure(path);
        out.append(QJsonObject{
            {QStringLiteral("path"), path},
            {QStringLiteral("allocatedBytes"), static_cast<double>(r.allocated)},
            {QStringLiteral("files"), static_cast<double>(r.files)},
            {QStringLiteral("unreadableFolders"), static_cast<double>(r.unreadable)},
            {QStringLiteral("otherFileSystemsSkipped"), static_cast<double>(r.otherFileSystems)}});
        QString note;
        if (r.unreadable > 0) {
            note += QStringLiteral(" (%1 could not be read)")
                        .arg(countOf(r.unreadable, u"folder", u"folders"));
        }
        if (r.otherFileSystems > 0) {
            note +=
                QStringLiteral(" (%1 not entered)")
                    .arg(countOf(r.otherFileSystems, u"other file system", u"other file systems"));
        }
        rows.emplace_back(MetricFormat::bytes(r.allocated), shownPath(path, home) + note);
    }
    if (o.json) {
        printJson(QJsonDocument(out));
    } else {
        printRows(rows);
    }
    return status;
}

} // namespace

void addSizeCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<SizeOptions>();
    auto* cmd = app.add_subcommand("size", "Measure the space files and folders take on disk");
    cmd->add_option("paths", o->paths, "Files or folders")->required();
    cmd->add_flag("--json", o->json, "Print JSON for scripts");
    cmd->callback([o, &result] {
        result.run = [o] {
            return runSize(*o);
        };
    });
}

} // namespace tarvik::cli
