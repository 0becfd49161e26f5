#include "dock/folder_bundle_builder.h"

#include "dock/folder_icon_sizes.h"
#include "dock/launcher_entry.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QSet>
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace tarvik {
namespace {

constexpr const char* kBlankIcon = "org.pellor.tarvik.blank";

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
    const auto outcome = buildAll({folder}, {{folder.id, bundleName}}, resident).front();
    if (outcome.launcher.isEmpty()) {
        fail(outcome.problem);
    }
    return outcome.launcher;
}

QHash<QString, QString>
DockFolderBundleBuilder::drawIcons(const QList<std::pair<QString, QString>>& jobs) const {
    QHash<QString, QString> problems;
    if (jobs.isEmpty()) {
        return problems;
    }
    QStringList args{QStringLiteral("--icons"), paths_.icons};
    for (const auto& [file, name] : jobs) {
        args << file << name;
    }
    QProcess helper;
    helper.setStandardInputFile(QProcess::nullDevice());
    helper.start(paths_.helper, args);
    const bool finished = helper.waitForFinished(60000);
    const QString said = QString::fromUtf8(helper.readAllStandardError()).trimmed();
    if (!finished || helper.exitStatus() != QProcess::NormalExit ||
        (helper.exitCode() != 0 && said.isEmpty())) {
        helper.kill();
        const QString why = QStringLiteral("The folder helper %1 couldn't draw the icons (%2).")
                                .arg(paths_.helper, said.isEmpty() ? helper.errorString() : said);
        for (const auto& job : jobs) {
            problems.insert(job.second, why);
        }
        return problems;
    }
    for (const QString& line : said.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const auto colon = line.indexOf(QStringLiteral(": "));
        if (colon > 0) {
            problems.insert(line.left(colon), line.mid(colon + 2));
        }
    }
    return problems;
}

QString DockFolderBundleBuilder::contentKey(const AppFolder& folder, const QString& json,
                                            bool resident) const {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(encodeFolder(folder));
    hash.addData(QFile::encodeName(json + QLatin1Char('\n') + paths_.helper));
    hash.addData(resident ? QByteArrayView("resident") : QByteArrayView("on click"));
    return QString::fromLatin1(hash.result().toHex().left(32));
}

bool DockFolderBundleBuilder::isUpToDate(const AppFolder& folder, const QString& key,
                                         const QString& json) const {
    const QString launcher = launcherPath(folder.id);
    if (entryValue(launcher, QLatin1String("X-Tarvik-Content")) != key) {
        return false;
    }
    const QString icon = entryValue(launcher, QLatin1String("Icon"));
    for (const FolderIconSize& size : folderIconSizes()) {
        if (!QFileInfo::exists(folderIconPath(paths_.icons, size, icon))) {
            return false;
        }
    }
    return QFileInfo::exists(json);
}

std::vector<DockFolderBundleBuilder::Outcome>
DockFolderBundleBuilder::buildAll(const std::vector<AppFolder>& folders,
                                  const QHash<QUuid, QString>& bundleNames, bool resident,
                                  bool always) const {
    std::vector<Outcome> out(folders.size());
    if (!QFileInfo(paths_.helper).isExecutable()) {
        for (Outcome& o : out) {
            o.problem = QStringLiteral("The folder helper is missing at %1. Run scripts/build.sh "
                                       "(or cmake --build) so tarvik-folder is built next to "
                                       "tarvik.")
                            .arg(paths_.helper);
        }
        return out;
    }
    struct Pending {
        QString json;
        QString iconName;
        qint64 version = 0;
        QStringList oldIcons;
        QString key;
    };
    std::vector<Pending> pending(folders.size());
    QList<std::pair<QString, QString>> jobs;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const AppFolder& folder = folders[i];
        Pending& p = pending[i];
        // New on every build, so docks and icon caches notice the change.
        p.version = std::max(QDateTime::currentSecsSinceEpoch(), builtVersion(folder.id) + 1);
        p.iconName = folder.bundleIdentifier() + QStringLiteral(".v") + QString::number(p.version);
        p.oldIcons = iconFiles(folder.bundleIdentifier());
        p.json = folderFile(bundleNames.value(folder.id, folder.sanitizedName()));
        p.key = contentKey(folder, p.json, resident);
        if (!always && isUpToDate(folder, p.key, p.json)) {
            out[i].launcher = launcherPath(folder.id);
            continue;
        }
        out[i].rebuilt = true;
        try {
            writeAtomically(p.json, encodeFolder(folder));
            jobs.append({p.json, p.iconName});
        } catch (const DockFolderBundleBuilderError& e) {
            out[i].problem = e.message;
        }
    }
    const auto problems = drawIcons(jobs);
    // An icon theme lists its folders by modification time; touching the theme folder makes
    // running docks look again.
    ::utimensat(AT_FDCWD, QFile::encodeName(paths_.icons).constData(), nullptr, 0);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        if (!out[i].problem.isEmpty() || !out[i].rebuilt) {
            continue;
        }
        const Pending& p = pending[i];
        if (problems.contains(p.iconName)) {
            out[i].problem = problems.value(p.iconName);
            for (const FolderIconSize& size : folderIconSizes()) {
                QFile::remove(folderIconPath(paths_.icons, size, p.iconName)); // a partial set
            }
            continue;
        }
        const QString launcher = launcherPath(folders[i].id);
        try {
            writeAtomically(launcher,
                            LauncherEntry::folder(folders[i], {paths_.helper, p.json, p.iconName,
                                                               p.version, resident, p.key})
                                .toUtf8());
        } catch (const DockFolderBundleBuilderError& e) {
            out[i].problem = e.message;
            continue;
        }
        for (const QString& old : p.oldIcons) {
            QFile::remove(old);
        }
        out[i].launcher = launcher;
    }
    return out;
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
    const QString path = paths_.icons + QStringLiteral("/scalable/apps/") +
                         QLatin1String(kBlankIcon) + QStringLiteral(".svg");
    if (!QFileInfo::exists(path)) {
        writeAtomically(path,
                        R"(<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64"/>)");
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
