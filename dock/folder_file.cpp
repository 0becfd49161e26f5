#include "dock/folder_file.h"

#include <QFile>
#include <QFileInfo>

namespace tarvik {
namespace {

constexpr qint64 kLargestFolder = qint64{4} << 20; // far above any real folder: damage, not data

} // namespace

FolderFileRead readFolderFile(const QString& path) {
    const QString rebuild = QStringLiteral(" Open Tarvik and save the folder again to rebuild it.");
    QFile f(path);
    if (!QFileInfo::exists(path)) {
        return {std::nullopt,
                QStringLiteral("This folder's file is missing: %1.").arg(path) + rebuild};
    }
    if (!f.open(QIODevice::ReadOnly)) {
        return {std::nullopt, QStringLiteral("This folder's file can't be read: %1 (%2).")
                                  .arg(path, f.errorString())};
    }
    std::optional<AppFolder> folder;
    if (f.size() <= kLargestFolder) {
        folder = decodeFolder(f.readAll());
    }
    if (!folder) {
        return {std::nullopt,
                QStringLiteral("This folder's file is damaged: %1.").arg(path) + rebuild};
    }
    return {std::move(folder), {}};
}

} // namespace tarvik
