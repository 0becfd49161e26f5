// The settings file, which a person may edit by hand: every key read with its type and range,
// and turned into the options the capabilities use.
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputFile file(data, size);
    const Preferences preferences(QString::fromStdString(file.path().string()));
    preferences.readProblem();
    const QString text = QString::fromUtf8(fuzz::bytes(data, size));
    for (const PreferenceKey& key : preferenceKeys()) {
        formatPreference(key, preferences.value(key.key));
        parsePreference(key, text);
    }
    preferences.menuBarStats();
    preferences.speedTestBaseURL();
    CapabilitySettings::junkScanner(preferences);
    CapabilitySettings::removalMode(preferences, pref::kJunkRemovalMode);
    CapabilitySettings::exclusions(preferences, QStringLiteral("/home/fuzz"));
    CapabilitySettings::schedules(preferences);
    return 0;
}
