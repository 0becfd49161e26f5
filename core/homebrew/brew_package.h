#pragma once

#include "core/homebrew/brew_service.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarvik {

enum class BrewServiceState { Running, Stopped, Failed };

// One installed formula or cask.
struct BrewPackage {
    QString id; // formula name or cask token
    BrewPackageKind kind = BrewPackageKind::Formula;
    QString displayName;
    std::optional<QString> desc;
    QString tap;
    std::optional<QString> homepage;
    std::optional<QString> license;
    QString installedVersion;
    std::optional<QString> latestVersion; // set only when an upgrade exists
    std::optional<QDateTime> installedAt;
    bool onRequest = false;
    bool pinned = false;
    bool deprecated = false;
    bool disabled = false;
    bool autoUpdates = false;
    QStringList dependencies;
    std::optional<QString> caveats;
    QStringList apps;
    bool needsAdmin = false; // removing it runs commands as root: give brew the askpass helper
    QStringList dependents;
    std::optional<std::int64_t> size;
    std::optional<BrewServiceState> service;

    const QString& name() const { return id; }
    bool isOutdated() const { return latestVersion.has_value() && !pinned; }
    bool isDependency() const { return !onRequest; }
    bool isMajorJump() const;
    bool operator==(const BrewPackage&) const = default;
};

struct BrewOutdated {
    QString name;
    BrewPackageKind kind = BrewPackageKind::Formula;
    QString installedVersion;
    QString currentVersion;
    bool pinned = false;
    bool operator==(const BrewOutdated&) const = default;
};

struct BrewSnapshot {
    std::vector<BrewPackage> packages;
    QDateTime fetchedAt;

    std::vector<BrewPackage> outdated() const;
    std::vector<BrewPackage> pinned() const;
    int formulaeCount() const;
    int casksCount() const;
    int onRequestCount() const;
    std::int64_t totalSize() const;

    static BrewSnapshot merge(std::vector<BrewPackage> installed,
                              const std::vector<BrewOutdated>& outdated,
                              const QMap<QString, BrewServiceState>& services);
};

namespace BrewVersion {
// "1.2.3,abc9" is shown as "1.2.3".
QString display(const QString& version);
std::optional<int> major(const QString& version);
// Both majors known, below 1000 (date versions are not major jumps), and different.
bool isMajorJump(const QString& from, const QString& to);
} // namespace BrewVersion

} // namespace tarvik
