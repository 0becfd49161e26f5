#include "core/monitor/process_naming.h"

#include "core/monitor/process_tracker.h"
#include "core/sys/system_files.h"
#include "core/text/qt_text.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <array>

namespace tarvik {

namespace ProcessNaming {

std::optional<std::string> appBundlePath(std::string_view executable) {
    // The nearest enclosing bundle: the last component ending in ".app" that isn't the file.
    std::size_t end = executable.rfind('/');
    while (end != std::string_view::npos && end > 0) {
        const std::string_view folder = executable.substr(0, end);
        const auto slash = folder.rfind('/');
        const std::string_view component = folder.substr(slash + 1);
        if (component.size() > 4 && component.ends_with(".app")) {
            return std::string(folder);
        }
        end = slash;
    }
    return std::nullopt;
}

std::string displayName(const std::optional<std::string>& path, std::string_view fallback) {
    if (path) {
        if (const auto bundle = appBundlePath(*path)) {
            const auto slash = bundle->rfind('/');
            const std::string component = bundle->substr(slash + 1);
            return component.substr(0, component.size() - 4);
        }
    }
    return std::string(fallback);
}

} // namespace ProcessNaming

namespace {

// Programs that run something else: an entry that starts one says nothing about the process.
bool isLauncher(const QString& program) {
    static const std::array<QLatin1String, 16> kLaunchers = {
        QLatin1String("sh"),      QLatin1String("bash"),   QLatin1String("dash"),
        QLatin1String("zsh"),     QLatin1String("env"),    QLatin1String("perl"),
        QLatin1String("ruby"),    QLatin1String("node"),   QLatin1String("java"),
        QLatin1String("sudo"),    QLatin1String("pkexec"), QLatin1String("flatpak"),
        QLatin1String("gjs"),     QLatin1String("wine"),   QLatin1String("mono"),
        QLatin1String("xdg-open")};
    const QString base = program.section(QLatin1Char('/'), -1);
    if (base.startsWith(QLatin1String("python"))) {
        return true;
    }
    return std::find(kLaunchers.begin(), kLaunchers.end(), base) != kLaunchers.end();
}

// The first word of an Exec line, with quotes removed and leading "env VAR=…" skipped.
QString program(const QString& exec) {
    QStringList words;
    QString word;
    bool quoted = false;
    for (const QChar c : exec) {
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (c == QLatin1Char(' ') && !quoted) {
            if (!word.isEmpty()) {
                words << word;
                word.clear();
            }
        } else {
            word += c;
        }
    }
    if (!word.isEmpty()) {
        words << word;
    }
    int i = 0;
    if (words.value(0) == QLatin1String("env")) {
        for (i = 1; i < words.size() && words[i].contains(QLatin1Char('=')); ++i) {
        }
    }
    return words.value(i);
}

} // namespace

std::optional<DesktopApplications::Entry> DesktopApplications::parseEntry(std::string_view text,
                                                                          const QString& id) {
    Entry e;
    e.app.id = id;
    QString exec;
    QString tryExec;
    bool inMain = false;
    bool application = false;
    bool hidden = false;
    for (const QString& raw : toQString(text).split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inMain = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const auto eq = line.indexOf(QLatin1Char('='));
        if (!inMain || eq < 0) {
            continue;
        }
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == QLatin1String("Name")) {
            e.app.name = value;
        } else if (key == QLatin1String("Icon")) {
            e.app.icon = value;
        } else if (key == QLatin1String("Exec")) {
            exec = value;
        } else if (key == QLatin1String("TryExec")) {
            tryExec = value;
        } else if (key == QLatin1String("Type")) {
            application = value == QLatin1String("Application");
        } else if (key == QLatin1String("Hidden")) {
            hidden = value == QLatin1String("true");
        } else if (key == QLatin1String("X-Flatpak")) {
            e.flatpak = true;
        }
    }
    if (!application || hidden || e.app.name.isEmpty()) {
        return std::nullopt;
    }
    e.exec = tryExec.isEmpty() ? program(exec) : tryExec;
    return e;
}

std::optional<QString> DesktopApplications::flatpakId(std::string_view cgroup) {
    // systemd names a Flatpak sandbox's scope "app-flatpak-<id>-<number>.scope".
    constexpr std::string_view kPrefix = "app-flatpak-";
    const auto at = cgroup.find(kPrefix);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view unit = cgroup.substr(at + kPrefix.size());
    unit = unit.substr(0, std::min(unit.find('/'), unit.find('\n')));
    if (!unit.ends_with(".scope")) {
        return std::nullopt;
    }
    unit.remove_suffix(6);
    const auto dash = unit.rfind('-');
    if (dash == std::string_view::npos || dash == 0) {
        return std::nullopt;
    }
    QString id = toQString(unit.substr(0, dash));
    id.replace(QLatin1String("\\x2d"), QLatin1String("-"));
    return id;
}

std::vector<std::filesystem::path> DesktopApplications::defaultFolders() {
    std::vector<std::filesystem::path> out;
    const QString home = QDir::homePath();
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    out.emplace_back((dataHome.isEmpty() ? home + QLatin1String("/.local/share")
                                         : QString::fromLocal8Bit(dataHome))
                         .toStdString() +
                     "/applications");
    QByteArray dirs = qgetenv("XDG_DATA_DIRS");
    if (dirs.isEmpty()) {
        dirs = "/usr/local/share:/usr/share";
    }
    for (const QByteArray& d : dirs.split(':')) {
        if (!d.isEmpty()) {
            out.emplace_back(d.toStdString() + "/applications");
        }
    }
    out.emplace_back(home.toStdString() + "/.local/share/flatpak/exports/share/applications");
    out.emplace_back("/var/lib/flatpak/exports/share/applications");
    return out;
}

DesktopApplications DesktopApplications::load(const std::vector<std::filesystem::path>& folders) {
    DesktopApplications apps;
    for (const auto& folder : folders) {
        std::error_code ec;
        for (auto it = std::filesystem::directory_iterator(folder, ec);
             !ec && it != std::filesystem::directory_iterator(); it.increment(ec)) {
            const auto& p = it->path();
            if (p.extension() != ".desktop") {
                continue;
            }
            const QString id = QString::fromStdString(p.filename().string());
            if (apps.byId_.contains(id)) {
                continue; // an earlier folder overrides this one
            }
            if (const auto text = platform::readSmallFile(folder, p.filename())) {
                if (auto entry = parseEntry(*text, id)) {
                    apps.add(std::move(*entry));
                }
            }
        }
    }
    return apps;
}

void DesktopApplications::add(Entry entry) {
    const QString id = entry.app.id;
    if (!entry.flatpak && !entry.exec.isEmpty() && !isLauncher(entry.exec)) {
        if (entry.exec.startsWith(QLatin1Char('/')) && !byPath_.contains(entry.exec)) {
            byPath_.insert(entry.exec, id);
        }
        const QString base = entry.exec.section(QLatin1Char('/'), -1);
        if (!byBaseName_.contains(base)) {
            byBaseName_.insert(base, id);
        }
    }
    byId_.insert(id, std::move(entry.app));
}

const DesktopApplication* DesktopApplications::find(const ProcessUsage& process,
                                                    const std::filesystem::path& root) const {
    if (process.kernelThread || byId_.empty()) {
        return nullptr;
    }
    const auto lookup = [this](const QString& id) -> const DesktopApplication* {
        const auto it = byId_.constFind(id);
        return it == byId_.cend() ? nullptr : &it.value();
    };
    const auto proc = root / "proc" / std::to_string(process.pid);
    if (const auto cgroup = platform::readSmallFile(proc, "cgroup")) {
        if (const auto id = flatpakId(*cgroup)) {
            return lookup(*id + QLatin1String(".desktop"));
        }
    }
    if (!process.path) {
        return nullptr;
    }
    QString path = QString::fromStdString(*process.path);
    // An AppImage runs from a temporary mount; the image itself is what its entry starts.
    if (path.startsWith(QLatin1String("/tmp/.mount_"))) {
        if (const auto environ = platform::readSmallFile(proc, "environ")) {
            for (const QString& var : toQString(*environ).split(QChar(0))) {
                if (var.startsWith(QLatin1String("APPIMAGE="))) {
                    path = var.mid(9);
                }
            }
        }
    }
    if (const auto it = byPath_.constFind(path); it != byPath_.cend()) {
        return lookup(it.value());
    }
    if (const auto it = byBaseName_.constFind(path.section(QLatin1Char('/'), -1));
        it != byBaseName_.cend()) {
        return lookup(it.value());
    }
    return nullptr;
}

} // namespace tarvik
