#include "core/homebrew/brew_parsing.h"

#include "core/cleanup/directory_sizer.h"
#include "core/text/whole_number.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace tarvik {
namespace {

QJsonDocument decode(const QByteArray& json) {
    QJsonParseError error{};
    QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        throw BrewParseError{};
    }
    return doc;
}

std::optional<QString> optionalString(const QJsonObject& o, const char* key) {
    const QJsonValue v = o.value(QLatin1String(key));
    return v.isString() ? std::optional(v.toString()) : std::nullopt;
}

QString string(const QJsonObject& o, const char* key) {
    return o.value(QLatin1String(key)).toString();
}
bool boolean(const QJsonObject& o, const char* key) {
    return o.value(QLatin1String(key)).toBool(false);
}

QStringList strings(const QJsonValue& v) {
    QStringList out;
    for (const auto& s : v.toArray()) {
        if (s.isString()) {
            out << s.toString();
        }
    }
    return out;
}

std::optional<BrewPackage> formula(const QJsonObject& o) {
    if (!o.value(QLatin1String("name")).isString()) {
        return std::nullopt;
    }
    BrewPackage p;
    p.id = string(o, "name");
    p.kind = BrewPackageKind::Formula;
    p.displayName = p.id;
    p.desc = optionalString(o, "desc");
    p.tap = optionalString(o, "tap").value_or(QStringLiteral("homebrew/core"));
    p.homepage = optionalString(o, "homepage");
    p.license = optionalString(o, "license");
    const QJsonArray kegs = o.value(QLatin1String("installed")).toArray();
    const auto linked = optionalString(o, "linked_keg");
    QJsonObject keg;
    for (const auto& k : kegs) {
        if (linked && k.toObject().value(QLatin1String("version")).toString() == *linked) {
            keg = k.toObject();
        }
    }
    if (keg.isEmpty() && !kegs.isEmpty()) {
        keg = kegs.last().toObject(); // no linked keg, or one that is not among the entries
    }
    p.installedVersion = string(keg, "version");
    p.onRequest = boolean(keg, "installed_on_request");
    if (const QJsonValue t = keg.value(QLatin1String("time")); t.isDouble()) {
        p.installedAt = QDateTime::fromSecsSinceEpoch(wholeNumber<qint64>(t.toDouble()));
    }
    p.pinned = boolean(o, "pinned");
    p.deprecated = boolean(o, "deprecated");
    p.disabled = boolean(o, "disabled");
    p.dependencies = strings(o.value(QLatin1String("dependencies")));
    p.caveats = optionalString(o, "caveats");
    return p;
}

// Removing a cask runs as root when its uninstall steps touch the package database, launchd, or
// system folders.
bool uninstallNeedsAdmin(const QJsonValue& directive) {
    if (directive.isString()) {
        return directive.toString().startsWith(QLatin1String("/Library"));
    }
    if (directive.isArray()) {
        for (const auto& d : directive.toArray()) {
            if (uninstallNeedsAdmin(d)) {
                return true;
            }
        }
        return false;
    }
    const QJsonObject o = directive.toObject();
    for (auto it = o.begin(); it != o.end(); ++it) {
        if (it.key() == QLatin1String("pkgutil") || it.key() == QLatin1String("launchctl") ||
            uninstallNeedsAdmin(it.value())) {
            return true;
        }
    }
    return false;
}

std::optional<BrewPackage> cask(const QJsonObject& o) {
    if (!o.value(QLatin1String("token")).isString() ||
        !o.value(QLatin1String("installed")).isString()) {
        return std::nullopt;
    }
    BrewPackage p;
    p.id = string(o, "token");
    p.kind = BrewPackageKind::Cask;
    const QStringList names = strings(o.value(QLatin1String("name")));
    p.displayName = names.isEmpty() ? p.id : names.front();
    p.desc = optionalString(o, "desc");
    p.tap = optionalString(o, "tap").value_or(QStringLiteral("homebrew/cask"));
    p.homepage = optionalString(o, "homepage");
    p.installedVersion = string(o, "installed");
    if (const QJsonValue t = o.value(QLatin1String("installed_time")); t.isDouble()) {
        p.installedAt = QDateTime::fromSecsSinceEpoch(wholeNumber<qint64>(t.toDouble()));
    }
    p.onRequest = true; // casks are never installed as dependencies
    p.deprecated = boolean(o, "deprecated");
    p.disabled = boolean(o, "disabled");
    p.autoUpdates = boolean(o, "auto_updates");
    p.caveats = optionalString(o, "caveats");
    for (const auto& a : o.value(QLatin1String("artifacts")).toArray()) {
        const QJsonObject artifact = a.toObject();
        for (const auto& app : artifact.value(QLatin1String("app")).toArray()) {
            if (app.isString()) {
                p.apps << app.toString();
            }
        }
        if (artifact.contains(QLatin1String("uninstall")) &&
            uninstallNeedsAdmin(artifact.value(QLatin1String("uninstall")))) {
            p.needsAdmin = true;
        }
    }
    p.dependencies =
        strings(o.value(QLatin1String("depends_on")).toObject().value(QLatin1String("formula")));
    return p;
}

} // namespace

namespace BrewParsing {

std::vector<BrewPackage> parseInstalled(const QByteArray& json) {
    const QJsonObject root = decode(json).object();
    std::vector<BrewPackage> out;
    for (const auto& f : root.value(QLatin1String("formulae")).toArray()) {
        if (auto p = formula(f.toObject())) {
            out.push_back(std::move(*p));
        }
    }
    for (const auto& c : root.value(QLatin1String("casks")).toArray()) {
        if (auto p = cask(c.toObject())) {
            out.push_back(std::move(*p));
        }
    }
    return out;
}

std::vector<BrewOutdated> parseOutdated(const QByteArray& json) {
    const QJsonDocument doc = decode(json);
    std::vector<BrewOutdated> out;
    if (!doc.isObject()) {
        return out;
    }
    for (auto [key, kind] : {std::pair{"formulae", BrewPackageKind::Formula},
                             std::pair{"casks", BrewPackageKind::Cask}}) {
        for (const auto& e : doc.object().value(QLatin1String(key)).toArray()) {
            const QJsonObject o = e.toObject();
            if (!o.value(QLatin1String("name")).isString() ||
                !o.value(QLatin1String("current_version")).isString()) {
                continue;
            }
            const QStringList installed = strings(o.value(QLatin1String("installed_versions")));
            out.push_back({string(o, "name"), kind,
                           installed.isEmpty() ? QString() : installed.last(),
                           string(o, "current_version"),
                           kind == BrewPackageKind::Formula && boolean(o, "pinned")});
        }
    }
    return out;
}

QMap<QString, BrewServiceState> parseServices(const QByteArray& json) {
    QMap<QString, BrewServiceState> out;
    for (const auto& e : decode(json).array()) {
        const QJsonObject o = e.toObject();
        if (!o.value(QLatin1String("name")).isString()) {
            continue;
        }
        const QString status = string(o, "status");
        BrewServiceState state = BrewServiceState::Stopped;
        if (status == QLatin1String("started")) {
            state = BrewServiceState::Running;
        } else if (status == QLatin1String("error")) {
            state = BrewServiceState::Failed;
        } else if (o.contains(QLatin1String("pid")) && !o.value(QLatin1String("pid")).isNull()) {
            state = BrewServiceState::Running;
        }
        out.insert(string(o, "name"), state);
    }
    return out;
}

} // namespace BrewParsing

void measureBrewPackages(std::vector<BrewPackage>& packages, const BrewEnvironment& environment) {
    const DirectorySizer sizer;
    for (auto& p : packages) {
        if (p.kind == BrewPackageKind::Formula) {
            p.size = sizer.size(environment.cellar() + QLatin1Char('/') + p.id);
            continue;
        }
        std::int64_t size = sizer.size(environment.caskroom() + QLatin1Char('/') + p.id);
        for (const QString& app : p.apps) {
            size += sizer.size(
                app.startsWith(QLatin1Char('/')) ? app : QStringLiteral("/Applications/") + app);
        }
        p.size = size;
    }
}

std::optional<QDateTime> lastBrewUpdate(const BrewEnvironment& environment) {
    const QFileInfo fetchHead(
        environment.prefix +
        QStringLiteral("/Library/Taps/homebrew/homebrew-core/.git/FETCH_HEAD"));
    if (!fetchHead.exists()) {
        return std::nullopt;
    }
    return fetchHead.lastModified();
}

} // namespace tarvik
