#pragma once

#include "core/monitor/menu_bar_stat.h"

#include <QObject>
#include <QSettings>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tarvik {

// Url: an http or https address; Agents: agent names separated by commas;
// Schedules: the keep-awake schedules' JSON.
enum class PreferenceType { Bool, Double, MenuBarStats, Choice, Url, Agents, Schedules };

struct PreferenceKey {
    std::string_view key;
    PreferenceType type;
    std::string_view defaultText; // the default in the same text form the command line accepts
    std::string_view meaning;
    std::optional<double> minimum; // Double only
    std::optional<double> maximum;
    std::string_view choices = {}; // Choice only: the accepted values, separated by "|"
};

namespace pref {
inline constexpr std::string_view kShowMenuBarExtra = "showMenuBarExtra";
inline constexpr std::string_view kOpensWindowAtLaunch = "opensWindowAtLaunch";
inline constexpr std::string_view kMenuBarShowsIcon = "menuBarShowsIcon";
inline constexpr std::string_view kMenuBarShowsStats = "menuBarShowsStats";
inline constexpr std::string_view kMenuBarStats = "menuBarStats";
inline constexpr std::string_view kHideDockIcon = "hideDockIcon";
inline constexpr std::string_view kMonitorInterval = "monitorInterval";
inline constexpr std::string_view kDockFoldersShowIndicators = "dockFoldersShowIndicators";
inline constexpr std::string_view kDockFoldersHideGroupedApps = "dockFoldersHideGroupedApps";
inline constexpr std::string_view kJunkRemovalMode = "junkRemovalMode";
inline constexpr std::string_view kHomebrewCheckInterval = "homebrewCheckInterval";
inline constexpr std::string_view kHomebrewIncludeGreedy = "homebrewIncludeGreedy";
inline constexpr std::string_view kHomebrewShowBadge = "homebrewShowBadge";
inline constexpr std::string_view kSpeedTestBaseURL = "speedTestBaseURL";
inline constexpr std::string_view kFileRemovalMode = "fileRemovalMode";
inline constexpr std::string_view kAgentUsageOrder = "agentUsage.order";
inline constexpr std::string_view kAgentUsageEnabled = "agentUsage.enabled";
inline constexpr std::string_view kKeepAwakeSchedules = "keepAwakeSchedules";
inline constexpr std::string_view kKeepAwakeLidClosed = "keepAwakeLidClosed";
// A list of folders, managed by `tarvik exclusions` and the Settings screen.
inline constexpr std::string_view kExclusions = "exclusions";
} // namespace pref

// Every key the program knows, with its type, default and range. Capabilities add theirs here.
std::span<const PreferenceKey> preferenceKeys();
const PreferenceKey* findPreferenceKey(std::string_view key);

struct ParsedPreference {
    QVariant value; // valid when the text was accepted
    QString error;  // the reason in the user's words otherwise
    bool ok() const { return error.isEmpty(); }
};

// Parses text for `key` by its type and range: booleans accept true/false, on/off, yes/no, 1/0;
// "menuBarStats" accepts known reading keys only and normalises them to display order.
ParsedPreference parsePreference(const PreferenceKey& key, const QString& text);
QString formatPreference(const PreferenceKey& key, const QVariant& value);

// The preference store: QSettings in native format at ~/.config/Tarvik/Tarvik.conf. A value
// that is absent or unreadable yields the key's default; writing through here tells observers.
class Preferences : public QObject {
    Q_OBJECT
public:
    explicit Preferences(const QString& filePath = defaultFilePath(), QObject* parent = nullptr);
    ~Preferences() override;

    static QString defaultFilePath();
    QString filePath() const;

    QVariant value(std::string_view key) const;
    bool isStored(std::string_view key) const;
    void setValue(std::string_view key, const QVariant& value);
    void reset(std::string_view key);
    // Writes what is pending; false when the file cannot be written.
    bool sync();

    bool showMenuBarExtra() const { return value(pref::kShowMenuBarExtra).toBool(); }
    bool opensWindowAtLaunch() const { return value(pref::kOpensWindowAtLaunch).toBool(); }
    bool menuBarShowsIcon() const { return value(pref::kMenuBarShowsIcon).toBool(); }
    bool menuBarShowsStats() const { return value(pref::kMenuBarShowsStats).toBool(); }
    std::vector<MenuBarStat> menuBarStats() const;
    bool hideDockIcon() const { return value(pref::kHideDockIcon).toBool(); }
    double monitorInterval() const { return value(pref::kMonitorInterval).toDouble(); }
    bool dockFoldersShowIndicators() const {
        return value(pref::kDockFoldersShowIndicators).toBool();
    }
    bool dockFoldersHideGroupedApps() const {
        return value(pref::kDockFoldersHideGroupedApps).toBool();
    }

    // Why the settings file can't be read, when it exists and can't: its values are then
    // unknown, not the defaults.
    std::optional<QString> readProblem() const;

    // The speed-test service's address; the default when the stored one is not an http(s) one.
    QUrl speedTestBaseURL() const;

    QStringList exclusions() const;
    void setExclusions(const QStringList& paths);

    // Re-reads the file when another process (the command line) changed it.
    void watchFile();

signals:
    void changed(const QString& key);

private:
    void reloadFromDisk();
    void remember(std::string_view key);

    std::unique_ptr<QSettings> settings_;
    std::vector<QVariant> lastSeen_; // filled while the file is watched
};

} // namespace tarvik
