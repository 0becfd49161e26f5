#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace tarvik {

enum class JunkCategory {
    UserCaches,
    UserLogs,
    CrashReports,
    PackageManagerCaches,
    XcodeDerivedData,
    SimulatorCaches,
    DeviceSupport,
    XcodeArchives,
    MailAttachments,
    OldInstallers,
    Trash,
};

inline constexpr std::array<JunkCategory, 11> kAllJunkCategories{JunkCategory::UserCaches,
                                                                 JunkCategory::UserLogs,
                                                                 JunkCategory::CrashReports,
                                                                 JunkCategory::PackageManagerCaches,
                                                                 JunkCategory::XcodeDerivedData,
                                                                 JunkCategory::SimulatorCaches,
                                                                 JunkCategory::DeviceSupport,
                                                                 JunkCategory::XcodeArchives,
                                                                 JunkCategory::MailAttachments,
                                                                 JunkCategory::OldInstallers,
                                                                 JunkCategory::Trash};

struct JunkCategoryInfo {
    std::string_view rawValue;
    std::string_view title;
    std::string_view summary;
    std::string_view symbol;
    bool selectedByDefault;
};

const JunkCategoryInfo& info(JunkCategory category);
std::optional<JunkCategory> junkCategoryFromRaw(std::string_view raw);
// Xcode, its simulators and devices, and Mail keep their junk only on a Mac: on Linux these
// categories stay in the list (a home copied from a Mac may still hold their folders) but are
// normally empty.
bool existsOnLinux(JunkCategory category);
// Trash contents are deleted for good whatever the chosen mode: trashing them frees nothing.
inline bool alwaysDeletesPermanently(JunkCategory c) {
    return c == JunkCategory::Trash;
}

// Where a category looks, relative to home.
struct ScanTarget {
    enum class Mode { Children, Files, Whole };
    QString path;
    Mode mode;
    std::set<QString> names; // Children: names left out; Files: lower-case extensions kept
};

// The targets of a category, relative to home. `downloads` is the user's download folder (it
// has another name in other languages), `trashFiles` the home trash's "files" where
// XDG_DATA_HOME puts it (empty: not in home).
std::vector<ScanTarget> targets(JunkCategory category, const QString& downloads = "Downloads",
                                const QString& trashFiles = ".local/share/Trash/files");

} // namespace tarvik
