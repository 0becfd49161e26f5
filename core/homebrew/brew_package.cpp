#include "core/homebrew/brew_package.h"

#include <QHash>
#include <algorithm>
#include <iterator>

namespace tarvik {

bool BrewPackage::isMajorJump() const {
    return latestVersion && BrewVersion::isMajorJump(installedVersion, *latestVersion);
}

std::vector<BrewPackage> BrewSnapshot::outdated() const {
    std::vector<BrewPackage> out;
    std::copy_if(packages.begin(), packages.end(), std::back_inserter(out),
                 [](const BrewPackage& p) { return p.isOutdated(); });
    return out;
}

std::vector<BrewPackage> BrewSnapshot::pinned() const {
    std::vector<BrewPackage> out;
    std::copy_if(packages.begin(), packages.end(), std::back_inserter(out),
                 [](const BrewPackage& p) { return p.pinned; });
    return out;
}

int BrewSnapshot::formulaeCount() const {
    return static_cast<int>(
        std::count_if(packages.begin(), packages.end(),
                      [](const BrewPackage& p) { return p.kind == BrewPackageKind::Formula; }));
}

int BrewSnapshot::casksCount() const {
    return static_cast<int>(packages.size()) - formulaeCount();
}

int BrewSnapshot::onRequestCount() const {
    return static_cast<int>(std::count_if(packages.begin(), packages.end(),
                                          [](const BrewPackage& p) { return p.onRequest; }));
}

std::int64_t BrewSnapshot::totalSize() const {
    std::int64_t total = 0;
    for (const auto& p : packages) {
        total += p.size.value_or(0);
    }
    return total;
}

BrewSnapshot BrewSnapshot::merge(std::vector<BrewPackage> installed,
                                 const std::vector<BrewOutdated>& outdated,
                                 const QMap<QString, BrewServiceState>& services) {
    QHash<QString, std::size_t> index[2];
    for (std::size_t i = 0; i < installed.size(); ++i) {
        index[static_cast<int>(installed[i].kind)].insert(installed[i].id, i);
    }
    for (const auto& o : outdated) {
        const auto& byKind = index[static_cast<int>(o.kind)];
        if (const auto it = byKind.find(o.name); it != byKind.end()) {
            installed[*it].latestVersion = o.currentVersion;
        }
    }
    QHash<QString, QStringList> needers;
    for (auto& p : installed) {
        if (p.kind == BrewPackageKind::Formula && services.contains(p.id)) {
            p.service = services.value(p.id);
        }
        for (const QString& d : p.dependencies) {
            needers[d] << p.id;
        }
    }
    for (auto& p : installed) {
        p.dependents = needers.value(p.id);
    }
    return {std::move(installed), QDateTime::currentDateTimeUtc()};
}

namespace BrewVersion {

QString display(const QString& version) {
    if (version.isEmpty()) {
        return version;
    }
    const QStringList pieces = version.split(QLatin1Char(','), Qt::SkipEmptyParts);
    return pieces.isEmpty() ? QString() : pieces.front();
}

std::optional<int> major(const QString& version) {
    const QString first = display(version);
    qsizetype i = 0;
    while (i < first.size() && !first[i].isDigit()) {
        ++i;
    }
    qsizetype end = i;
    while (end < first.size() && first[end].isDigit()) {
        ++end;
    }
    if (end == i) {
        return std::nullopt;
    }
    bool ok = false;
    const int value = first.mid(i, std::min<qsizetype>(end - i, 9)).toInt(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

bool isMajorJump(const QString& from, const QString& to) {
    const auto a = major(from);
    const auto b = major(to);
    return a && b && *a < 1000 && *b < 1000 && *a != *b;
}

} // namespace BrewVersion

} // namespace tarvik
