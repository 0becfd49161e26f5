#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace tarvik {

struct DockPreferencesError {
    QString message;
};

// A copy of the dock's list taken before Tarvik changed it.
struct DockBackup {
    QString path;
    QDateTime taken;
    QStringList tiles;
};

// Reads and writes the dock's list of tiles (GNOME's favourite apps), backing the current list
// up before each write. GNOME follows the list live, so there is nothing to restart.
class DockPreferences {
public:
    static constexpr int kBackupsKept = 10;

    explicit DockPreferences(QString backupsDirectory = defaultBackupsDirectory());
    static QString defaultBackupsDirectory(); // <Application Support>/Backups

    // Why this desktop's dock can't be changed, or none when it can.
    static std::optional<QString> unavailableReason();
    static QString supportedDesktops();

    QStringList tiles() const;
    // Backs up the current list, then writes `tiles`. Throws DockPreferencesError.
    void setTiles(const QStringList& tiles) const;

    // Newest first. Files that aren't backups are left out.
    std::vector<DockBackup> backups() const;
    static std::optional<DockBackup> readBackup(const QString& path);

private:
    QString backupPath(const QDateTime& when) const;
    void backUp(const QStringList& current) const;
    QString dir_;
};

} // namespace tarvik
