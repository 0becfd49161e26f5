#include "app/shell/section_subtitles.h"

namespace tarvik {

QString sectionSubtitle(AppSection section) {
    switch (section) {
    case AppSection::Overview:
        return QStringLiteral("A quick look at this computer.");
    case AppSection::SystemJunk:
        return QStringLiteral("Caches, logs and leftovers that are safe to remove.");
    case AppSection::LargeFiles:
        return QStringLiteral("Find big and forgotten files.");
    case AppSection::Duplicates:
        return QStringLiteral("Find files with identical contents, wherever they are. The oldest "
                              "copy is kept by default.");
    case AppSection::ProjectJunk:
        return QStringLiteral("Build folders and downloaded dependencies of your projects.");
    case AppSection::SpaceLens:
        return QStringLiteral("See what takes up your disk.");
    case AppSection::Monitor:
        return QStringLiteral("Live CPU, memory, network, disk, GPU and battery readings.");
    case AppSection::DevServers:
        return QStringLiteral("Servers you are running on local ports.");
    case AppSection::Agents:
        return QStringLiteral("Usage limits and estimated spend of AI coding agents.");
    case AppSection::SpeedTest:
        return QStringLiteral("Measure your internet connection.");
    case AppSection::DeviceCheck:
        return QStringLiteral("Check the hardware, battery and storage of this computer.");
    case AppSection::SystemInfo:
        return QStringLiteral("What this computer is made of.");
    case AppSection::Uninstaller:
        return QStringLiteral("Remove applications together with their leftovers.");
    case AppSection::Homebrew:
        return QStringLiteral("Keep your Homebrew packages up to date.");
    case AppSection::DockFolders:
        return QStringLiteral("Group your apps into folders that sit in the dock.");
    case AppSection::KeepAwake:
        return QStringLiteral("Keep this computer awake on demand or on a schedule.");
    case AppSection::Settings:
        return QStringLiteral("How Tarvik starts and what its tray item shows.");
    }
    return {};
}

} // namespace tarvik
