#include "core/settings/preferences.h"

#include "core/agents/agent_provider.h"
#include "core/awake/keep_awake_schedule_store.h"
#include "core/sys/xdg_paths.h"
#include "core/text/qt_text.h"

#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace tarvik {
namespace {

constexpr std::array<PreferenceKey, 19> kKeys{{
    {pref::kShowMenuBarExtra, PreferenceType::Bool, "true", "The tray item is present.", {}, {}},
    {pref::kOpensWindowAtLaunch,
     PreferenceType::Bool,
     "true",
     "A normal launch opens the main window.",
     {},
     {}},
    {pref::kMenuBarShowsIcon,
     PreferenceType::Bool,
     "true",
     "The tray item shows the app symbol.",
     {},
     {}},
    {pref::kMenuBarShowsStats,
     PreferenceType::Bool,
     "false",
     "The tray item shows readings.",
     {},
     {}},
    {pref::kMenuBarStats,
     PreferenceType::MenuBarStats,
     "cpu,memory",
     "Readings the tray item shows: cpu, memory, download, upload, gpu, battery, agent.",
     {},
     {}},
    {pref::kHideDockIcon,
     PreferenceType::Bool,
     "false",
     "Hide the taskbar entry while no window is open (only while the tray item is shown).",
     {},
     {}},
    {pref::kMonitorInterval, PreferenceType::Double, "2", "Sampling interval in seconds.", 1.0,
     10.0},
    {pref::kDockFoldersShowIndicators,
     PreferenceType::Bool,
     "false",
     "Keeps a tiny helper running per folder so the dock shows a dot while any of its apps are "
     "open. Takes effect on Apply.",
     {},
     {}},
    {pref::kDockFoldersHideGroupedApps,
     PreferenceType::Bool,
     "false",
     "When applying, apps that are inside a folder are removed from the dock (they stay "
     "installed).",
     {},
     {}},
    {pref::kJunkRemovalMode,
     PreferenceType::Choice,
     "deletePermanently",
     "Caches, logs and build output: moveToTrash or deletePermanently.",
     {},
     {},
     "moveToTrash|deletePermanently"},
    {pref::kHomebrewCheckInterval, PreferenceType::Double, "86400",
     "Seconds between checks for Homebrew updates; 0 never checks.", 0.0, 2592000.0},
    {pref::kHomebrewIncludeGreedy,
     PreferenceType::Bool,
     "false",
     "Also upgrade casks that update themselves.",
     {},
     {}},
    {pref::kHomebrewShowBadge,
     PreferenceType::Bool,
     "true",
     "Show the number of Homebrew updates beside the section.",
     {},
     {}},
    {pref::kSpeedTestBaseURL,
     PreferenceType::Url,
     "https://speed.cloudflare.com/",
     "The speed-test service's address.",
     {},
     {}},
    {pref::kFileRemovalMode,
     PreferenceType::Choice,
     "moveToTrash",
     "Large files, duplicates and uninstalled apps: moveToTrash or deletePermanently.",
     {},
     {},
     "moveToTrash|deletePermanently"},
    {pref::kAgentUsageOrder,
     PreferenceType::Agents,
     "claude,codex,copilot,openRouter",
     "The order of the agents' cards: claude, codex, copilot, openRouter.",
     {},
     {}},
    {pref::kAgentUsageEnabled,
     PreferenceType::Agents,
     "claude,codex,copilot,openRouter",
     "The agents whose usage is fetched and shown.",
     {},
     {}},
    {pref::kKeepAwakeSchedules,
     PreferenceType::Schedules,
     "",
     "The keep-awake schedules as JSON; `tarvik awake schedules` edits them.",
     {},
     {}},
    {pref::kKeepAwakeLidClosed,
     PreferenceType::Bool,
     "false",
     "While keeping awake, closing the laptop lid doesn't suspend.",
     {},
     {}},
}};

} // namespace

std::span<const PreferenceKey> preferenceKeys() {
    return kKeys;
}

const PreferenceKey* findPreferenceKey(std::string_view key) {
    for (const auto& k : kKeys) {
        if (k.key == key) {
            return &k;
        }
    }
    return nullptr;
}

ParsedPreference parsePreference(const PreferenceKey& key, const QString& text) {
    const QString t = text.trimmed();
    switch (key.type) {
    case PreferenceType::Bool: {
        const QString l = t.toLower();
        if (l == "true" || l == "on" || l == "yes" || l == "1") {
            return {true, {}};
        }
        if (l == "false" || l == "off" || l == "no" || l == "0") {
            return {false, {}};
        }
        return {
            {},
            QStringLiteral("%1 takes true or false, not \"%2\".").arg(toQString(key.key), text)};
    }
    case PreferenceType::Double: {
        bool ok = false;
        const double v = t.toDouble(&ok);
        if (!ok || !std::isfinite(v)) {
            return {{},
                    QStringLiteral("%1 takes a number, not \"%2\".").arg(toQString(key.key), text)};
        }
        if ((key.minimum && v < *key.minimum) || (key.maximum && v > *key.maximum)) {
            return {{},
                    QStringLiteral("%1 must be between %2 and %3.")
                        .arg(toQString(key.key))
                        .arg(key.minimum.value_or(v))
                        .arg(key.maximum.value_or(v))};
        }
        return {v, {}};
    }
    case PreferenceType::Url: {
        QUrl url(t, QUrl::StrictMode);
        if (!url.isValid() ||
            (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https")) ||
            url.host().isEmpty()) {
            return {{},
                    QStringLiteral("%1 takes a full http or https address, such as "
                                   "https://speed.cloudflare.com/, not \"%2\".")
                        .arg(toQString(key.key), text)};
        }
        if (!url.path().endsWith(QLatin1Char('/'))) {
            url.setPath(url.path() + QLatin1Char('/'));
        }
        return {url.toString(), {}};
    }
    case PreferenceType::Agents: {
        QStringList chosen;
        for (const QString& piece : t.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const auto provider = agentProviderFromRaw(piece.trimmed());
            if (!provider) {
                return {{},
                        QStringLiteral("\"%1\" is not an agent; choose from claude, codex, "
                                       "copilot, openRouter.")
                            .arg(piece.trimmed())};
            }
            if (!chosen.contains(rawValue(*provider))) {
                chosen << rawValue(*provider);
            }
        }
        return {chosen.join(QLatin1Char(',')), {}};
    }
    case PreferenceType::Schedules: {
        if (t.isEmpty()) {
            return {t, {}};
        }
        const auto decoded = KeepAwakeScheduleStore::decode(t.toUtf8());
        const bool inRange = std::all_of(
            decoded.schedules.begin(), decoded.schedules.end(), [](const KeepAwakeSchedule& k) {
                return k.startMinutes >= 0 && k.startMinutes < kMinutesPerDay &&
                       k.endMinutes >= 0 && k.endMinutes < kMinutesPerDay && !k.weekdays.empty() &&
                       *k.weekdays.begin() >= 1 && *k.weekdays.rbegin() <= 7;
            });
        if (!decoded.error.isEmpty() || !inRange) {
            return {{},
                    QStringLiteral("%1 takes a list of schedules as JSON, each with an id, days "
                                   "from 1 (Sunday) to 7 and times in minutes from 0 to 1439; "
                                   "tarvik awake schedules add makes them.")
                        .arg(toQString(key.key))};
        }
        return {t, {}};
    }
    case PreferenceType::Choice: {
        const QStringList allowed = toQString(key.choices).split(QLatin1Char('|'));
        if (!allowed.contains(t)) {
            return {{},
                    QStringLiteral("%1 takes %2, not \"%3\".")
                        .arg(toQString(key.key), allowed.join(QStringLiteral(" or ")), text)};
        }
        return {t, {}};
    }
    case PreferenceType::MenuBarStats: {
        std::vector<MenuBarStat> chosen;
        for (const QString& piece : t.split(',', Qt::SkipEmptyParts)) {
            const QByteArray utf8 = piece.trimmed().toUtf8();
            const auto stat =
                menuBarStatFromRawKey(std::string_view(utf8.constData(), utf8.size()));
            if (!stat) {
                return {
                    {},
                    QStringLiteral("\"%1\" is not a reading; choose from cpu, memory, download, "
                                   "upload, gpu, battery, agent.")
                        .arg(piece.trimmed())};
            }
            chosen.push_back(*stat);
        }
        return {QString::fromStdString(writeMenuBarStats(chosen)), {}};
    }
    }
    return {{}, QStringLiteral("Unsupported preference type.")};
}

QString formatPreference(const PreferenceKey& key, const QVariant& value) {
    switch (key.type) {
    case PreferenceType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case PreferenceType::Double:
        return QString::number(value.toDouble());
    case PreferenceType::MenuBarStats:
    case PreferenceType::Choice:
    case PreferenceType::Url:
    case PreferenceType::Agents:
    case PreferenceType::Schedules:
        return value.toString();
    }
    return {};
}

Preferences::Preferences(const QString& filePath, QObject* parent)
    : QObject(parent), settings_(std::make_unique<QSettings>(filePath, QSettings::NativeFormat)) {}

Preferences::~Preferences() = default;

QString Preferences::defaultFilePath() {
    return xdg::configHome() + QStringLiteral("/Tarvik/Tarvik.conf");
}

QString Preferences::filePath() const {
    return settings_->fileName();
}

QVariant Preferences::value(std::string_view key) const {
    const PreferenceKey* k = findPreferenceKey(key);
    if (k == nullptr) {
        return settings_->value(toQString(key));
    }
    auto fallback = parsePreference(*k, toQString(k->defaultText)).value;
    QVariant stored = settings_->value(toQString(key));
    if (!stored.isValid()) {
        return fallback;
    }
    // The file is plain text a person may have edited: an unreadable value means the default.
    if (k->type == PreferenceType::Bool && stored.typeId() == QMetaType::Bool) {
        return stored;
    }
    // An unquoted "a,b" in the file reads back as a list.
    const QString text = stored.typeId() == QMetaType::QStringList
                             ? stored.toStringList().join(QLatin1Char(','))
                             : stored.toString();
    if (k->type == PreferenceType::MenuBarStats) {
        // Reading is lenient where writing is strict: unknown readings are ignored.
        return QString::fromStdString(writeMenuBarStats(parseMenuBarStats(text.toStdString())));
    }
    if (k->type == PreferenceType::Schedules) {
        return text; // damage is the schedules' reader's to report, not to hide as "none"
    }
    if (k->type == PreferenceType::Agents) {
        // Lenient like the readings: names it doesn't know are left out.
        QStringList known;
        for (const QString& piece : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            if (agentProviderFromRaw(piece.trimmed())) {
                known << piece.trimmed();
            }
        }
        return parsePreference(*k, known.join(QLatin1Char(','))).value;
    }
    auto parsed = parsePreference(*k, text);
    if (!parsed.ok() && k->type == PreferenceType::Double) {
        bool ok = false;
        const double v = text.toDouble(&ok);
        // Out of range is the reader's to clamp; only non-numbers fall back.
        return ok ? QVariant(v) : fallback;
    }
    return parsed.ok() ? parsed.value : fallback;
}

bool Preferences::isStored(std::string_view key) const {
    return settings_->contains(toQString(key));
}

void Preferences::setValue(std::string_view key, const QVariant& value) {
    settings_->setValue(toQString(key), value);
    remember(key);
    emit changed(toQString(key));
}

void Preferences::reset(std::string_view key) {
    settings_->remove(toQString(key));
    remember(key);
    emit changed(toQString(key));
}

void Preferences::remember(std::string_view key) {
    if (lastSeen_.empty()) {
        return; // not watching
    }
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        if (kKeys[i].key == key) {
            lastSeen_[i] = value(key);
        }
    }
}

bool Preferences::sync() {
    settings_->sync();
    return settings_->status() == QSettings::NoError;
}

std::optional<QString> Preferences::readProblem() const {
    const QString path = filePath();
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink()) {
        return std::nullopt; // never written: every value is its default
    }
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        return QStringLiteral("it is a folder");
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return file.errorString();
    }
    switch (settings_->status()) {
    case QSettings::NoError:
        return std::nullopt;
    case QSettings::AccessError:
        return QStringLiteral("it can't be read");
    case QSettings::FormatError:
        return QStringLiteral("it is not a settings file");
    }
    return std::nullopt;
}

QUrl Preferences::speedTestBaseURL() const {
    const PreferenceKey& key = *findPreferenceKey(pref::kSpeedTestBaseURL);
    const ParsedPreference parsed = parsePreference(key, value(pref::kSpeedTestBaseURL).toString());
    return QUrl(parsed.ok() ? parsed.value.toString() : toQString(key.defaultText));
}

QStringList Preferences::exclusions() const {
    const QVariant v = settings_->value(toQString(pref::kExclusions));
    QStringList out;
    for (const QString& p : v.toStringList()) {
        if (!p.trimmed().isEmpty()) {
            out << p;
        }
    }
    return out;
}

void Preferences::setExclusions(const QStringList& paths) {
    settings_->setValue(toQString(pref::kExclusions), paths);
    emit changed(toQString(pref::kExclusions));
}

std::vector<MenuBarStat> Preferences::menuBarStats() const {
    return parseMenuBarStats(value(pref::kMenuBarStats).toString().toStdString());
}

void Preferences::watchFile() {
    lastSeen_.clear();
    for (const auto& k : kKeys) {
        lastSeen_.push_back(value(k.key));
    }
    auto* watcher = new QFileSystemWatcher(this);
    const QString path = filePath();
    const QString dir = path.section('/', 0, -2);
    watcher->addPath(dir);
    if (QFileInfo::exists(path)) {
        watcher->addPath(path);
    }
    auto onChange = [this, watcher, path] {
        if (!watcher->files().contains(path) && QFileInfo::exists(path)) {
            watcher->addPath(path); // editors and QSettings replace the file by renaming
        }
        reloadFromDisk();
    };
    connect(watcher, &QFileSystemWatcher::fileChanged, this, onChange);
    connect(watcher, &QFileSystemWatcher::directoryChanged, this, onChange);
}

void Preferences::reloadFromDisk() {
    settings_->sync();
    // Compared with what this store last saw, not with QSettings, whose shared cache may
    // already hold the new contents.
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        QVariant now = value(kKeys[i].key);
        if (now != lastSeen_[i]) {
            lastSeen_[i] = std::move(now);
            emit changed(toQString(kKeys[i].key));
        }
    }
}

} // namespace tarvik
