#include "dock/app_folder.h"

#include "core/sys/xdg_paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>
#include <utility>

namespace tarvik {
namespace {

constexpr qint64 kLargestList = qint64{16} << 20; // far above any real list: damage, not data

std::optional<AppFolder> folderFrom(const QJsonObject& o) {
    AppFolder folder;
    folder.id = QUuid::fromString(o.value(QLatin1String("id")).toString());
    if (folder.id.isNull()) {
        return std::nullopt;
    }
    folder.name = o.value(QLatin1String("name")).toString();
    folder.showInDock = o.value(QLatin1String("showInDock")).toBool(true);
    for (const auto& a : o.value(QLatin1String("apps")).toArray()) {
        const QJsonObject app = a.toObject();
        AppEntry entry{app.value(QLatin1String("name")).toString(),
                       app.value(QLatin1String("path")).toString(), std::nullopt};
        if (app.value(QLatin1String("bundleIdentifier")).isString()) {
            entry.bundleIdentifier = app.value(QLatin1String("bundleIdentifier")).toString();
        }
        if (!entry.path.isEmpty()) {
            folder.apps.push_back(std::move(entry));
        }
    }
    return folder;
}

QJsonObject toJson(const AppFolder& folder) {
    QJsonArray apps;
    for (const AppEntry& app : folder.apps) {
        QJsonObject a{{QLatin1String("name"), app.name}, {QLatin1String("path"), app.path}};
        if (app.bundleIdentifier) {
            a.insert(QLatin1String("bundleIdentifier"), *app.bundleIdentifier);
        }
        apps.append(a);
    }
    return {{QLatin1String("id"), folder.id.toString(QUuid::WithoutBraces).toUpper()},
            {QLatin1String("name"), folder.name},
            {QLatin1String("showInDock"), folder.showInDock},
            {QLatin1String("apps"), apps}};
}

} // namespace

QString AppEntry::reference() const {
    if (bundleIdentifier && !bundleIdentifier->isEmpty()) {
        return *bundleIdentifier;
    }
    return QFileInfo(path).fileName();
}

QString AppFolder::bundleIdentifier() const {
    return QStringLiteral("org.pellor.tarvik.folder.") + id.toString(QUuid::WithoutBraces);
}

QString AppFolder::launcherId() const {
    return bundleIdentifier() + QStringLiteral(".desktop");
}

QString AppFolder::sanitizedName() const {
    QString out;
    out.reserve(name.size());
    for (QChar c : name.trimmed()) {
        out += (c == QLatin1Char('/') || c == QChar() || c.category() == QChar::Other_Control)
                   ? QLatin1Char('-')
                   : c;
    }
    while (out.startsWith(QLatin1Char('.'))) {
        out.remove(0, 1);
    }
    // A file name has at most 255 bytes; leave room for a number and the ".staging-" suffix.
    while (out.toUtf8().size() > 200) {
        out.chop(1);
    }
    return out.isEmpty() ? QStringLiteral("Folder") : out;
}

QHash<QUuid, QString> bundleNames(const std::vector<AppFolder>& folders) {
    QHash<QUuid, QString> names;
    QSet<QString> taken;
    for (const AppFolder& folder : folders) {
        const QString base = folder.sanitizedName();
        QString name = base;
        for (int n = 2; taken.contains(name.toCaseFolded()); ++n) {
            name = base + QLatin1Char(' ') + QString::number(n);
        }
        taken.insert(name.toCaseFolded());
        names.insert(folder.id, name);
    }
    return names;
}

std::vector<AppFolder> decodeFolders(const QByteArray& json) {
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    std::vector<AppFolder> out;
    if (!doc.isArray()) {
        return out;
    }
    for (const auto& v : doc.array()) {
        if (auto folder = folderFrom(v.toObject())) {
            out.push_back(std::move(*folder));
        }
    }
    return out;
}

std::optional<AppFolder> decodeFolder(const QByteArray& json) {
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    return doc.isObject() ? folderFrom(doc.object()) : std::nullopt;
}

QByteArray encodeFolders(const std::vector<AppFolder>& folders) {
    QJsonArray list;
    for (const AppFolder& folder : folders) {
        list.append(toJson(folder));
    }
    return QJsonDocument(list).toJson(QJsonDocument::Indented);
}

QByteArray encodeFolder(const AppFolder& folder) {
    return QJsonDocument(toJson(folder)).toJson(QJsonDocument::Indented);
}

DockFolderStore::DockFolderStore(QString supportDirectory) : dir_(std::move(supportDirectory)) {}

QString DockFolderStore::defaultSupportDirectory() {
    return xdg::applicationSupport() + QStringLiteral("/DockFolders");
}

QString DockFolderStore::listPath() const {
    return dir_ + QStringLiteral("/folders.json");
}

QString DockFolderStore::foldersDirectory() const {
    return dir_ + QStringLiteral("/Folders");
}

std::vector<AppFolder> DockFolderStore::load() const {
    QFile f(listPath());
    if (!f.open(QIODevice::ReadOnly) || f.size() > kLargestList) {
        return {};
    }
    return decodeFolders(f.readAll());
}

bool DockFolderStore::save(const std::vector<AppFolder>& folders, QString* error) const {
    QSaveFile f(listPath());
    if (!QDir().mkpath(dir_) || !f.open(QIODevice::WriteOnly) ||
        f.write(encodeFolders(folders)) < 0 || !f.commit()) {
        if (error != nullptr) {
            *error = QStringLiteral("Couldn't save the folders to %1: %2.")
                         .arg(listPath(), f.errorString());
        }
        return false;
    }
    return true;
}

} // namespace tarvik
