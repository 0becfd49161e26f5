#include "dock/folder_bundle_builder.h"

#include "dock/folder_icon_renderer.h"
#include "dock/launcher_entry.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>
#include <QSet>
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace tarvik {
namespace {

constexpr const char* kBlankIcon = "org.pellor.tarvik.blank";
constexpr int kPngQuality = 85; // light compression: the plate is mostly flat, so size barely grows

[[noreturn]] void fail(const QString& message) {
    throw DockFolderBundleBuilderError{message};
}

void writeAtomically(const QString& path, const QByteArray& contents) {
    if (!QDir().mkpath(QFileInfo(path).path())) {
        fail(QStringLiteral("Couldn't create the folder %1.").arg(QFileInfo(path).path()));
    }
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(contents) != contents.size() || !f.commit()) {
        fail(QStringLiteral("Couldn't write %1: %2.").arg(path, f.errorString()));
    }
}

void writePng(const QString& path, const QImage& image) {
    if (!QDir().mkpath(QFileInfo(path).path())) {
        fail(QStringLiteral("Couldn't create the folder %1.").arg(QFileInfo(path).path()));
    }
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) {
        fail(QStringLiteral("Couldn't write %1: %2.").arg(path, f.errorString()));
    }
    QImageWriter writer(&f, "png");
    writer.setQuality(kPngQuality);
    if (!writer.write(image) || !f.commit()) {
        fail(QStringLiteral("Couldn't write the icon %1: %2.").arg(path, writer.errorString()));
    }
}

QString entryValue(const QString& path, QLatin1String key) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    const QByteArray prefix = QByteArray(key.data(), key.size()) + '=';
    while (!f.atEnd()) {
        const QByteArray line = f.readLine(4096).trimmed();
        if (line.startsWith(prefix)) {
            return QString::fromUtf8(line.mid(prefix.size()));
        }
    }
    return {};
}

QString folderPrefix() {
    return QStringLiteral("org.pellor.tarvik.folder.");
}

} // namespace

DockFolderBundleBuilder::DockFolderBundleBuilder(DockPaths paths, DockFolderStore store)
    : paths_(std::move(paths)), store_(std::move(store)) {}

QString DockFolderBundleBuilder::folderFile(const QString& bundleName) const {
    return store_.foldersDirectory() + QLatin1Char('/') + bundleName + QStringLiteral(".json");
}

QString DockFolderBundleBuilder::launcherPath(const QUuid& folder) const {
    AppFolder f;
    f.id = folder;
    return paths_.applications + QLatin1Char('/') + f.launcherId();
}

bool DockFolderBundleBuilder::isBuilt(const QUuid& folder) const {
    return QFileInfo::exists(launcherPath(folder));
}

qint64 DockFolderBundleBuilder::builtVersion(const QUuid& folder) const {
    return entryValue(launcherPath(folder), QLatin1String("X-Tarvik-Version")).toLongLong();
}

QList<QUuid> DockFolderBundleBuilder::builtFolders() const {
    QList<QUuid> out;
    const QString prefix = folderPrefix();
    for (const QString& name :
         QDir(paths_.applications).entryList({prefix + QStringLiteral("*.desktop")}, QDir::Files)) {
        const QUuid id = QUuid::fromString(name.mid(prefix.size()).chopped(8));
        if (!id.isNull()) {
            out.append(id);
        }
    }
    return out;
}

QStringList DockFolderBundleBuilder::iconFiles(const QString& bundleIdentifier) const {
    QStringList out;
    for (const FolderIconSize& size : folderIconSizes()) {
        const QString dir =
            paths_.icons + QLatin1Char('/') + size.themeFolder() + QStringLiteral("/apps");
        for (const QString& name :
             QDir(dir).entryList({bundleIdentifier + QStringLiteral(".v*.png")}, QDir::Files)) {
            out.append(dir + QLatin1Char('/') + name);
        }
    }
    return out;
}

QString DockFolderBundleBuilder::build(const AppFolder& folder, const QString& bundleName,
                                       bool resident) const {
    if (!QFileInfo(paths_.helper).isExecutable()) {
        fail(QStringLiteral("The folder helper is missing at %1. Run scripts/build.sh (or cmake "
                            "--build) so tarvik-folder is built next to tarvik.")
                 .arg(paths_.helper));
    }
    // New on every build, so docks and icon caches notice the change.
    const qint64 version =
        std::max(QDateTime::currentSecsSinceEpoch(), builtVersion(folder.id) + 1);
    const QString iconName =
        folder.bundleIdentifier() + QStringLiteral(".v") + QString::number(version);
    const QStringList oldIcons = iconFiles(folder.bundleIdentifier());

    const FolderIconRenderer renderer(folder);
    for (const FolderIconSize& size : folderIconSizes()) {
        writePng(paths_.icons + QLatin1Char('/') + size.themeFolder() + QStringLiteral("/apps/") +
                     iconName + QStringLiteral(".png"),
                 renderer.image(size.pixels));
    }
    // An icon theme lists its folders by modification time; touching the theme folder makes
    // running docks look again.
    ::utimensat(AT_FDCWD, QFile::encodeName(paths_.icons).constData(), nullptr, 0);

    const QString json = folderFile(bundleName);
    writeAtomically(json, encodeFolder(folder));
    const QString launcher = launcherPath(folder.id);
    writeAtomically(
        launcher,
        LauncherEntry::folder(folder, {paths_.helper, json, iconName, version, resident}).toUtf8());
    for (const QString& old : oldIcons) {
        QFile::remove(old);
    }
    return launcher;
}

QStringList DockFolderBundleBuilder::remove(const QUuid& folder) const {
    QStringList removed;
    const QString launcher = launcherPath(folder);
    if (QFile::remove(launcher)) {
        removed.append(launcher);
    }
    AppFolder f;
    f.id = folder;
    for (const QString& icon : iconFiles(f.bundleIdentifier())) {
        if (QFile::remove(icon)) {
            removed.append(icon);
        }
    }
    // The folder's own JSON files: those that decode to this folder.
    for (const QString& name :
         QDir(store_.foldersDirectory()).entryList({QStringLiteral("*.json")}, QDir::Files)) {
        const QString path = store_.foldersDirectory() + QLatin1Char('/') + name;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || file.size() > (qint64{1} << 20)) {
            continue;
        }
        const auto decoded = decodeFolder(file.readAll());
        file.close();
        if (decoded && decoded->id == folder && QFile::remove(path)) {
            removed.append(path);
        }
    }
    return removed;
}

QStringList DockFolderBundleBuilder::removeStaleFolderFiles(const QStringList& bundleNames) const {
    QSet<QString> keep;
    for (const QString& name : bundleNames) {
        keep.insert(name + QStringLiteral(".json"));
    }
    QStringList removed;
    for (const QString& name :
         QDir(store_.foldersDirectory()).entryList({QStringLiteral("*.json")}, QDir::Files)) {
        const QString path = store_.foldersDirectory() + QLatin1Char('/') + name;
        if (!keep.contains(name) && QFile::remove(path)) {
            removed.append(path);
        }
    }
    return removed;
}

void DockFolderBundleBuilder::writeBlankIcons() const {
    for (int pixels : {16, 32, 48, 64, 128, 256}) {
        const QString path = paths_.icons + QStringLiteral("/%1x%1/apps/").arg(pixels) +
                             QLatin1String(kBlankIcon) + QStringLiteral(".png");
        if (!QFileInfo::exists(path)) {
            QImage blank(pixels, pixels, QImage::Format_ARGB32);
            blank.fill(Qt::transparent);
            writePng(path, blank);
        }
    }
}

void DockFolderBundleBuilder::buildSpacer(const QString& tile) const {
    const auto kind = DockSpacers::kindOf(tile);
    if (!kind) {
        fail(QStringLiteral("%1 is not a spacer.").arg(tile));
    }
    writeBlankIcons();
    const QString path = paths_.applications + QLatin1Char('/') + tile;
    if (!QFileInfo::exists(path)) {
        writeAtomically(path, LauncherEntry::spacer(*kind, QLatin1String(kBlankIcon)).toUtf8());
    }
}

QStringList DockFolderBundleBuilder::removeSpacer(const QString& tile) const {
    if (!DockSpacers::kindOf(tile)) {
        return {};
    }
    const QString path = paths_.applications + QLatin1Char('/') + tile;
    return QFile::remove(path) ? QStringList{path} : QStringList{};
}

QStringList DockFolderBundleBuilder::builtSpacers() const {
    QStringList out;
    for (const QString& name :
         QDir(paths_.applications)
             .entryList({QStringLiteral("org.pellor.tarvik.*spacer.*.desktop")}, QDir::Files)) {
        if (DockSpacers::kindOf(name)) {
            out.append(name);
        }
    }
    return out;
}

} // namespace tarvik
