#pragma once

#include <QHash>
#include <QString>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

struct ProcessUsage;

namespace ProcessNaming {
// The nearest enclosing path component ending in ".app", or none.
std::optional<std::string> appBundlePath(std::string_view executable);
// The application bundle's name when the executable lies inside one, else `fallback`.
std::string displayName(const std::optional<std::string>& path, std::string_view fallback);
} // namespace ProcessNaming

// An installed application, as its .desktop entry describes it.
struct DesktopApplication {
    QString id; // the entry's file name, "org.gnome.TextEditor.desktop"
    QString name;
    QString icon; // a theme icon name or an absolute path
};

// Installed applications by what their processes look like: Flatpak apps by the sandbox's
// cgroup, AppImages by the image they were started from, packaged apps by the program their
// entry runs. The counterpart of naming a process after its application bundle.
class DesktopApplications {
public:
    // Application folders in XDG order (the first entry of an id wins): the user's data
    // folder, XDG_DATA_DIRS, and the Flatpak export folders.
    static std::vector<std::filesystem::path> defaultFolders();
    static DesktopApplications load(const std::vector<std::filesystem::path>& folders);

    // The application a process belongs to; `root` is where /proc is read (tests use a capture).
    const DesktopApplication* find(const ProcessUsage& process,
                                   const std::filesystem::path& root = "/") const;
    std::size_t size() const { return static_cast<std::size_t>(byId_.size()); }

    // Pure pieces, tested on their own.
    struct Entry {
        DesktopApplication app;
        QString exec; // the program the entry runs: first word of Exec, or TryExec
        bool flatpak = false;
    };
    static std::optional<Entry> parseEntry(std::string_view text, const QString& id);
    // The Flatpak application id of a process from /proc/<pid>/cgroup.
    static std::optional<QString> flatpakId(std::string_view cgroup);

private:
    void add(Entry entry);
    QHash<QString, DesktopApplication> byId_;
    QHash<QString, QString> byPath_;     // absolute program path -> id
    QHash<QString, QString> byBaseName_; // program file name -> id
};

} // namespace tarvik
