#include "dock/dock_preferences.h"

#include "core/sys/gnome_favorites.h"
#include "core/sys/xdg_paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTimeZone>
#include <algorithm>
#include <utility>

namespace tarvik {
namespace {

// Sortable, and free of the colons some file managers and archives choke on.
constexpr const char* kStampFormat = "yyyy-MM-dd'T'HH-mm-ss.zzz'Z'";
constexpr qint64 kLargestBackup = qint64{1} << 20;

const QString& failedToSave() {
    static const QString text = QStringLiteral("Couldn't save the Dock preferences (%1).")
                                    .arg(QLatin1String(GnomeFavorites::kSchema));
    return text;
}

QStringList backupFiles(const QString& dir) {
    QStringList names = QDir(dir).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const QString& name) {
                                   return !QDateTime::fromString(name.chopped(5),
                                                                 QLatin1String(kStampFormat))
                                               .isValid();
                               }),
                names.end());
    return names; // oldest first
}

} // namespace

DockPreferences::DockPreferences(QString backupsDirectory) : dir_(std::move(backupsDirectory)) {}

QString DockPreferences::defaultBackupsDirectory() {
    return xdg::applicationSupport() + QStringLiteral("/Backups");
}

std::optional<QString> DockPreferences::unavailableReason() {
    if (auto why = GnomeFavorites::unavailableReason()) {
        return *why + QLatin1Char(' ') + supportedDesktops();
    }
    return std::nullopt;
}

QString DockPreferences::supportedDesktops() {
    return QStringLiteral("Dock Folders works with GNOME's dash: GNOME Shell, Ubuntu Dock and "
                          "Dash to Dock. Other desktops' panels aren't supported yet.");
}

QStringList DockPreferences::tiles() const {
    return GnomeFavorites::read();
}

QString DockPreferences::backupPath(const QDateTime& when) const {
    return dir_ + QLatin1Char('/') + when.toString(QLatin1String(kStampFormat)) +
           QStringLiteral(".json");
}

void DockPreferences::backUp(const QStringList& current) const {
    if (!QDir().mkpath(dir_)) {
        throw DockPreferencesError{
            failedToSave() + QStringLiteral(" The backup folder %1 can't be created.").arg(dir_)};
    }
    QDateTime when = QDateTime::currentDateTimeUtc();
    while (QFile::exists(backupPath(when))) { // two writes within a millisecond
        when = when.addMSecs(1);
    }
    const QJsonObject doc{
        {QLatin1String(GnomeFavorites::kKey), QJsonArray::fromStringList(current)},
        {QLatin1String("schema"), QLatin1String(GnomeFavorites::kSchema)}};
    QSaveFile f(backupPath(when));
    if (!f.open(QIODevice::WriteOnly) || f.write(QJsonDocument(doc).toJson()) < 0 || !f.commit()) {
        throw DockPreferencesError{failedToSave() +
                                   QStringLiteral(" The backup %1 wasn't written: %2.")
                                       .arg(f.fileName(), f.errorString())};
    }
    QStringList names = backupFiles(dir_);
    for (qsizetype i = 0; i + kBackupsKept < names.size(); ++i) {
        QFile::remove(dir_ + QLatin1Char('/') + names[i]);
    }
}

void DockPreferences::setTiles(const QStringList& tiles) const {
    if (auto why = unavailableReason()) {
        throw DockPreferencesError{*why};
    }
    backUp(GnomeFavorites::read());
    QString error;
    if (!GnomeFavorites::write(tiles, &error)) {
        throw DockPreferencesError{failedToSave() + QLatin1Char(' ') + error};
    }
}

std::vector<DockBackup> DockPreferences::backups() const {
    std::vector<DockBackup> out;
    const QStringList names = backupFiles(dir_);
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        if (auto backup = readBackup(dir_ + QLatin1Char('/') + *it)) {
            out.push_back(std::move(*backup));
        }
    }
    return out;
}

std::optional<DockBackup> DockPreferences::readBackup(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly) || f.size() > kLargestBackup) {
        return std::nullopt;
    }
    const QJsonDocument doc = QJsonDocument::fromJson(f.readAll());
    const QJsonValue list = doc.object().value(QLatin1String(GnomeFavorites::kKey));
    if (!list.isArray()) {
        return std::nullopt;
    }
    DockBackup backup{path, {}, {}};
    for (const QJsonValue& v : list.toArray()) {
        if (!v.isString()) {
            return std::nullopt;
        }
        backup.tiles.append(v.toString());
    }
    QString name = QFileInfo(path).fileName();
    if (name.endsWith(QLatin1String(".json"))) {
        name.chop(5);
    }
    backup.taken = QDateTime::fromString(name, QLatin1String(kStampFormat));
    backup.taken.setTimeZone(QTimeZone::utc());
    return backup;
}

} // namespace tarvik
