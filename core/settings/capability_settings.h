#pragma once

// The settings translated into the typed options each capability takes. The capabilities never
// read settings themselves: the window (app/) and the commands (cli/) call these, so both read a
// key the same way.
#include "core/awake/keep_awake_schedule_store.h"
#include "core/cleanup/exclusion_list.h"
#include "core/cleanup/junk_scanner.h"
#include "core/cleanup/removal_mode.h"

#include <string_view>

namespace tarvik {

class Preferences;

namespace CapabilitySettings {

// This user's home, download folder, Trash and exclusions.
JunkScanner::Options junkScanner(const Preferences& preferences);
// "junkRemovalMode" or "fileRemovalMode", with the key's default for an unknown value.
RemovalMode removalMode(const Preferences& preferences, std::string_view key);
// The preference "exclusions"; when the settings file can't be read the list is unknown, and
// its `error()` says so (a removal must then stop rather than treat it as empty).
ExclusionList exclusions(const Preferences& preferences, const QString& home);

// The keep-awake schedules, as the window and `tarvik awake` keep them.
KeepAwakeScheduleStore::Decoded schedules(const Preferences& preferences);
void storeSchedules(Preferences& preferences, const std::vector<KeepAwakeSchedule>& schedules);

} // namespace CapabilitySettings
} // namespace tarvik
