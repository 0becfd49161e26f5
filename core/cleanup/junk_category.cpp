#include "core/cleanup/junk_category.h"

namespace tarvik {
namespace {

using C = JunkCategory;
using M = ScanTarget::Mode;

constexpr std::array<JunkCategoryInfo, 11> kInfo{{
    {"userCaches", "User Cache Files", "Temporary data apps rebuild automatically when needed.",
     "internaldrive", true},
    {"userLogs", "User Log Files", "Diagnostic logs written by apps and services.", "doc.plaintext",
     true},
    {"crashReports", "Crash Reports", "Reports generated when apps crash or hang.",
     "exclamationmark.triangle", true},
    {"packageManagerCaches", "Package Manager Caches",
     "Downloaded packages from Homebrew, npm, Yarn, pnpm, pip, Gradle and more.", "shippingbox",
     true},
    {"xcodeDerivedData", "Xcode Derived Data",
     "Intermediate build products and indexes. Rebuilt on next build.", "hammer", true},
    {"simulatorCaches", "Simulator Caches", "Caches for iOS, watchOS and tvOS simulators.",
     "iphone", true},
    {"deviceSupport", "Device Support Files",
     "Debug symbols for devices you've connected. Re-downloaded on demand.", "cable.connector",
     false},
    {"xcodeArchives", "Xcode Archives",
     "App archives created with Product › Archive. Needed for symbolication.", "archivebox", false},
    {"mailAttachments", "Mail Attachments",
     "Attachments you've opened in Mail. Originals stay on the mail server.", "paperclip", false},
    {"oldInstallers", "Installers in Downloads",
     "Disk images and packages you've already installed.", "opticaldiscdrive", false},
    {"trash", "Trash", "Items in your Trash. Removed permanently.", "trash", true},
}};

// Package-manager caches that live under ~/.cache on Linux; ~/.cache's own listing leaves
// their folders out, so nothing is counted twice.
const std::set<QString> kLinuxPackageCacheNames{"pip",      "Homebrew", "yarn",
                                                "pnpm",     "go-build", "ms-playwright",
                                                "node-gyp", "bazel",    "huggingface"};

} // namespace

const JunkCategoryInfo& info(JunkCategory category) {
    return kInfo[static_cast<std::size_t>(category)];
}

bool existsOnLinux(JunkCategory category) {
    switch (category) {
    case C::XcodeDerivedData:
    case C::SimulatorCaches:
    case C::DeviceSupport:
    case C::XcodeArchives:
    case C::MailAttachments:
        return false;
    default:
        return true;
    }
}

std::optional<JunkCategory> junkCategoryFromRaw(std::string_view raw) {
    for (auto c : kAllJunkCategories) {
        if (info(c).rawValue == raw) {
            return c;
        }
    }
    return std::nullopt;
}

std::vector<ScanTarget> targets(JunkCategory category, const QString& downloads,
                                const QString& trashFiles) {
    switch (category) {
    case C::UserCaches: {
        std::set<QString> linuxCache = kLinuxPackageCacheNames;
        linuxCache.insert(QStringLiteral("org.pellor.tarvik"));
        linuxCache.insert(QStringLiteral("Tarvik"));
        return {{"Library/Caches",
                 M::Children,
                 {"Homebrew", "pip", "Yarn", "pnpm", "CocoaPods", "go-build", "ms-playwright",
                  "node-gyp", "com.apple.HomeKit", "CloudKit", "com.apple.bird", "com.apple.akd",
                  "FamilyCircle", "com.apple.ap.adprivacyd", "com.apple.containermanagerd",
                  "org.pellor.tarvik"}},
                {".cache", M::Children, linuxCache}};
    }
    case C::UserLogs:
        return {{"Library/Logs", M::Children, {"DiagnosticReports"}},
                {".local/share/xorg", M::Files, {"log", "old"}}};
    case C::CrashReports:
        return {{"Library/Logs/DiagnosticReports", M::Children, {}}};
    case C::PackageManagerCaches: {
        std::vector<ScanTarget> out;
        for (const char* p :
             {"Library/Caches/Homebrew", "Library/Caches/pip", "Library/Caches/Yarn",
              "Library/Caches/pnpm", "Library/pnpm/store", "Library/Caches/CocoaPods",
              "Library/Caches/go-build", "Library/Caches/ms-playwright", "Library/Caches/node-gyp",
              ".npm/_cacache", ".yarn/berry/cache", ".bun/install/cache", ".gradle/caches",
              ".cargo/registry/cache", ".cache/pip", ".cache/huggingface/hub",
              // Linux homes of the same caches.
              ".cache/Homebrew", ".cache/yarn", ".cache/pnpm", ".local/share/pnpm/store",
              ".cache/go-build", ".cache/ms-playwright", ".cache/node-gyp", ".cache/bazel"}) {
            out.push_back({p, M::Whole, {}});
        }
        return out;
    }
    case C::XcodeDerivedData:
        return {{"Library/Developer/Xcode/DerivedData", M::Children, {}}};
    case C::SimulatorCaches:
        return {{"Library/Developer/CoreSimulator/Caches", M::Children, {}}};
    case C::DeviceSupport:
        return {{"Library/Developer/Xcode/iOS DeviceSupport", M::Children, {}},
                {"Library/Developer/Xcode/watchOS DeviceSupport", M::Children, {}},
                {"Library/Developer/Xcode/tvOS DeviceSupport", M::Children, {}},
                {"Library/Developer/Xcode/visionOS DeviceSupport", M::Children, {}}};
    case C::XcodeArchives:
        return {{"Library/Developer/Xcode/Archives", M::Children, {}}};
    case C::MailAttachments:
        return {{"Library/Containers/com.apple.mail/Data/Library/Mail Downloads", M::Children, {}}};
    case C::OldInstallers:
        return {{downloads, M::Files, {"dmg", "pkg", "mpkg", "iso", "xip", "deb", "rpm"}}};
    case C::Trash:
        if (trashFiles.isEmpty()) {
            return {{".Trash", M::Children, {}}};
        }
        return {{".Trash", M::Children, {}}, {trashFiles, M::Children, {}}};
    }
    return {};
}

} // namespace tarvik
