#pragma once

#include "dock/app_folder.h"
#include "dock/dock_paths.h"
#include "dock/dock_spacer.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <utility>
#include <vector>

namespace tarvik {

struct DockFolderBundleBuilderError {
    QString message;
};

// A folder on the desktop: its launcher (org.pellor.tarvik.folder.<uuid>.desktop), its icon
// set in the user's hicolor theme, and the folder's JSON that the launcher's helper reads.
// Every file is written beside its place and renamed into it, the launcher last, so a failed
// build leaves the previous folder working.
class DockFolderBundleBuilder {
public:
    DockFolderBundleBuilder(DockPaths paths, DockFolderStore store);

    // Builds or rebuilds the folder; returns its launcher's path. Throws
    // DockFolderBundleBuilderError.
    QString build(const AppFolder& folder, const QString& bundleName, bool resident) const;

    struct Outcome {
        QString launcher; // empty when the build failed
        QString problem;
        bool rebuilt = false; // false when it was up to date
    };
    // Builds several folders, their icons drawn by one run of the helper; one outcome per
    // folder, in order. A folder that fails keeps its previous build. Unless `always`, a folder
    // whose launcher and icons were built from the same folder is left as it is.
    std::vector<Outcome> buildAll(const std::vector<AppFolder>& folders,
                                  const QHash<QUuid, QString>& bundleNames, bool resident,
                                  bool always = true) const;
    QString launcherPath(const QUuid& folder) const;
    bool isBuilt(const QUuid& folder) const;
    // The version written into the folder's launcher, 0 when it has none.
    qint64 builtVersion(const QUuid& folder) const;
    // Folders whose launchers exist, by id.
    QList<QUuid> builtFolders() const;
    // Removes the folder's launcher, icons and JSON. Returns what was removed.
    QStringList remove(const QUuid& folder) const;
    // Removes folder JSON files that none of `bundleNames` names.
    QStringList removeStaleFolderFiles(const QStringList& bundleNames) const;

    // A spacer tile's blank launcher; written when missing.
    void buildSpacer(const QString& tile) const;
    QStringList removeSpacer(const QString& tile) const;
    // Spacer launchers on disk, by tile id.
    QStringList builtSpacers() const;

private:
    QString folderFile(const QString& bundleName) const;
    QStringList iconFiles(const QString& bundleIdentifier) const;
    void writeBlankIcons() const;
    // What a folder's launcher and icons are built from, as one digest.
    QString contentKey(const AppFolder& folder, const QString& json, bool resident) const;
    bool isUpToDate(const AppFolder& folder, const QString& key, const QString& json) const;
    // Runs the helper to draw each (folder file, icon name); the problems by icon name.
    QHash<QString, QString> drawIcons(const QList<std::pair<QString, QString>>& jobs) const;
    DockPaths paths_;
    DockFolderStore store_;
};

} // namespace tarvik
