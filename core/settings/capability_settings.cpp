#include "core/settings/capability_settings.h"

#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"
#include "core/sys/xdg_user_dirs.h"
#include "core/text/path_display.h"

namespace tarvik::CapabilitySettings {

JunkScanner::Options junkScanner(const Preferences& preferences) {
    JunkScanner::Options o;
    o.home = xdg::home();
    const QString downloads = xdg::downloadDir(xdg::configHome(), o.home);
    if (downloads.startsWith(o.home + QLatin1Char('/'))) {
        o.downloads = downloads.mid(o.home.size() + 1);
    }
    // The real Trash, wherever XDG_DATA_HOME put it; a folder merely named so is not offered.
    const QString trash = xdg::dataHome() + QStringLiteral("/Trash/files");
    o.trashFiles =
        trash.startsWith(o.home + QLatin1Char('/')) ? trash.mid(o.home.size() + 1) : QString();
    o.exclusions = exclusions(preferences, o.home);
    return o;
}

RemovalMode removalMode(const Preferences& preferences, std::string_view key) {
    const QByteArray raw = preferences.value(key).toString().toUtf8();
    const auto fallback =
        key == pref::kJunkRemovalMode ? RemovalMode::DeletePermanently : RemovalMode::MoveToTrash;
    return removalModeFromRaw(
               std::string_view(raw.constData(), static_cast<std::size_t>(raw.size())))
        .value_or(fallback);
}

ExclusionList exclusions(const Preferences& preferences, const QString& home) {
    if (const auto problem = preferences.readProblem()) {
        return ExclusionList::unknown(
            home, QStringLiteral("Tarvik couldn't read your exclusion list in %1 (%2), so it "
                                 "removes nothing until it can.")
                      .arg(PathDisplay::abbreviate(preferences.filePath(), home), *problem));
    }
    return ExclusionList(preferences.exclusions(), home);
}

KeepAwakeScheduleStore::Decoded schedules(const Preferences& preferences) {
    return KeepAwakeScheduleStore::decode(
        preferences.value(pref::kKeepAwakeSchedules).toString().toUtf8());
}

void storeSchedules(Preferences& preferences, const std::vector<KeepAwakeSchedule>& schedules) {
    preferences.setValue(pref::kKeepAwakeSchedules,
                         QString::fromUtf8(KeepAwakeScheduleStore::encode(schedules)));
    preferences.sync();
}

} // namespace tarvik::CapabilitySettings
