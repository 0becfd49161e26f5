#include "dock/dock_folder_login_agent.h"

#include "dock/launcher_entry.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <utility>

namespace tarvik {

DockFolderLoginAgent::DockFolderLoginAgent(QString autostartDir, QString tarvik)
    : dir_(std::move(autostartDir)), tarvik_(std::move(tarvik)) {}

QString DockFolderLoginAgent::entryPath() const {
    return dir_ + QLatin1Char('/') + QLatin1String(kEntryName);
}

bool DockFolderLoginAgent::isInstalled() const {
    return QFile::exists(entryPath());
}

bool DockFolderLoginAgent::install(QString* error) const {
    QSaveFile f(entryPath());
    if (!QDir().mkpath(dir_) || !f.open(QIODevice::WriteOnly) ||
        f.write(LauncherEntry::loginAgent(tarvik_).toUtf8()) < 0 || !f.commit()) {
        if (error != nullptr) {
            *error = QStringLiteral("Couldn't write %1: %2.").arg(entryPath(), f.errorString());
        }
        return false;
    }
    return true;
}

bool DockFolderLoginAgent::uninstall(QString* error) const {
    QFile f(entryPath());
    if (f.exists() && !f.remove()) {
        if (error != nullptr) {
            *error = QStringLiteral("Couldn't remove %1: %2.").arg(entryPath(), f.errorString());
        }
        return false;
    }
    return true;
}

} // namespace tarvik
