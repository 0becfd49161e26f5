#include "dock/app_folder.h"

#include "core/sys/xdg_paths.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace tarvik {

std::vector<AppFolder> decodeFolders(const QByteArray& json) {
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    std::vector<AppFolder> out;
    if (!doc.isArray()) {
        return out;
    }
    for (const auto& v : doc.array()) {
        const QJsonObject o = v.toObject();
        AppFolder folder;
        folder.id = QUuid::fromString(o.value(QLatin1String("id")).toString());
        if (folder.id.isNull()) {
            continue;
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
        out.push_back(std::move(folder));
    }
    return out;
}

DockFolderStore::DockFolderStore(QString supportDirectory) : dir_(std::move(supportDirectory)) {}

QString DockFolderStore::defaultSupportDirectory() {
    return xdg::applicationSupport() + QStringLiteral("/DockFolders");
}

QString DockFolderStore::listPath() const {
    return dir_ + QStringLiteral("/folders.json");
}

std::vector<AppFolder> DockFolderStore::load() const {
    QFile f(listPath());
    if (!f.open(QIODevice::ReadOnly)) {
        return {};
    }
    return decodeFolders(f.readAll());
}

} // namespace tarvik
