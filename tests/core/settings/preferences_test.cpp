#include "core/settings/preferences.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QCoreApplication>
#include <QSettings>
#include <cstdio>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::TempHome;

namespace {

QString configFile(const TempHome& home) {
    return home.config() + "/Tarvik/Tarvik.conf";
}

} // namespace

TEST(Preferences, EveryKeyHasItsDefaultWhenNothingIsStored) {
    TempHome home;
    Preferences prefs;
    EXPECT_EQ(prefs.filePath(), configFile(home)); // ~/.config/Tarvik/Tarvik.conf under XDG
    // The typed readers agree with the table's defaults.
    EXPECT_EQ(prefs.menuBarStats(), (std::vector{MenuBarStat::Cpu, MenuBarStat::Memory}));
    EXPECT_TRUE(prefs.exclusions().isEmpty());
    for (const auto& key : preferenceKeys()) {
        EXPECT_FALSE(prefs.isStored(key.key)) << key.key;
        // Each default is itself a value the key accepts.
        EXPECT_TRUE(parsePreference(key, QString::fromUtf8(key.defaultText.data(),
                                                           qsizetype(key.defaultText.size())))
                        .ok())
            << key.key;
    }
}

TEST(Preferences, ValuesPersistAcrossInstancesAndObserversHearOfChanges) {
    TempHome home;
    {
        Preferences prefs;
        QStringList heard;
        QObject::connect(&prefs, &Preferences::changed, [&heard](const QString& k) { heard << k; });
        prefs.setValue(pref::kHideDockIcon, true);
        prefs.setValue(pref::kMonitorInterval, 4.5);
        prefs.setValue(pref::kMenuBarStats, "battery,cpu");
        EXPECT_TRUE(prefs.sync());
        EXPECT_EQ(heard, (QStringList{"hideDockIcon", "monitorInterval", "menuBarStats"}));
    }
    Preferences again;
    EXPECT_TRUE(again.hideDockIcon());
    EXPECT_DOUBLE_EQ(again.monitorInterval(), 4.5);
    EXPECT_EQ(again.menuBarStats(), (std::vector{MenuBarStat::Cpu, MenuBarStat::Battery}));
    again.reset(pref::kHideDockIcon);
    EXPECT_FALSE(again.isStored(pref::kHideDockIcon));
    EXPECT_FALSE(again.hideDockIcon());
}

TEST(Preferences, HandEditedNonsenseFallsBackToDefaultsButOutOfRangeNumbersAreKept) {
    TempHome home;
    tarvik::test::writeFile(configFile(home), "[General]\n"
                                              "showMenuBarExtra=perhaps\n"
                                              "menuBarShowsStats=yes\n"
                                              "monitorInterval=fast\n"
                                              "menuBarStats=cpu,volume\n");
    Preferences prefs;
    EXPECT_TRUE(prefs.showMenuBarExtra()); // "perhaps" is not a boolean: default on
    EXPECT_TRUE(prefs.menuBarShowsStats());
    EXPECT_DOUBLE_EQ(prefs.monitorInterval(), 2.0);
    EXPECT_EQ(prefs.value(pref::kMenuBarStats).toString(), "cpu"); // unknown readings ignored

    tarvik::test::writeFile(configFile(home), "[General]\nmonitorInterval=0.2\n");
    Preferences clamped;
    // The sampler clamps; the store reports what is there.
    EXPECT_DOUBLE_EQ(clamped.monitorInterval(), 0.2);
}

TEST(Preferences, ParsingChecksTypeAndRangeInTheUsersWords) {
    const auto& interval = *findPreferenceKey("monitorInterval");
    EXPECT_DOUBLE_EQ(parsePreference(interval, "1").value.toDouble(), 1.0);
    EXPECT_DOUBLE_EQ(parsePreference(interval, " 10 ").value.toDouble(), 10.0);
    EXPECT_EQ(parsePreference(interval, "10.5").error, "monitorInterval must be between 1 and 10.");
    EXPECT_FALSE(parsePreference(interval, "0.99").ok());
    EXPECT_FALSE(parsePreference(interval, "nan").ok());
    EXPECT_FALSE(parsePreference(interval, "inf").ok());
    EXPECT_EQ(parsePreference(interval, "two").error,
              "monitorInterval takes a number, not \"two\".");

    const auto& shown = *findPreferenceKey("showMenuBarExtra");
    for (const char* yes : {"true", "On", "YES", "1"}) {
        EXPECT_EQ(parsePreference(shown, yes).value, QVariant(true)) << yes;
    }
    for (const char* no : {"false", "off", "No", "0"}) {
        EXPECT_EQ(parsePreference(shown, no).value, QVariant(false)) << no;
    }
    EXPECT_FALSE(parsePreference(shown, "2").ok());
    EXPECT_FALSE(parsePreference(shown, "").ok());

    const auto& stats = *findPreferenceKey("menuBarStats");
    EXPECT_EQ(parsePreference(stats, "battery, cpu").value.toString(), "cpu,battery");
    EXPECT_EQ(parsePreference(stats, "").value.toString(), "");
    EXPECT_FALSE(parsePreference(stats, "cpu,volume").ok());

    EXPECT_EQ(findPreferenceKey("nonsense"), nullptr);
}

TEST(Preferences, ChangesWrittenByAnotherProcessReachAWatchingStore) {
    TempHome home;
    Preferences watching;
    watching.setValue(pref::kMenuBarShowsIcon, true);
    ASSERT_TRUE(watching.sync());
    watching.watchFile();
    QStringList heard;
    QObject::connect(&watching, &Preferences::changed, [&heard](const QString& k) { heard << k; });
    auto waitFor = [&heard](const QString& key) {
        return tarvik::test::waitUntil([&] { return heard.contains(key); }, 5000);
    };

    // Edited in place, as a text editor may do.
    tarvik::test::writeFile(configFile(home),
                            "[General]\nmenuBarShowsIcon=true\nshowMenuBarExtra=false\n");
    EXPECT_TRUE(waitFor("showMenuBarExtra"));
    EXPECT_FALSE(heard.contains("menuBarShowsIcon")); // unchanged keys stay quiet
    EXPECT_FALSE(watching.showMenuBarExtra());

    // Replaced by renaming a new file over it, as QSettings in `tarvik settings` does.
    tarvik::test::writeFile(configFile(home) + ".new",
                            "[General]\nmenuBarShowsIcon=true\nshowMenuBarExtra=false\n"
                            "hideDockIcon=true\n");
    ASSERT_EQ(::rename((configFile(home) + ".new").toLocal8Bit().constData(),
                       configFile(home).toLocal8Bit().constData()),
              0);
    EXPECT_TRUE(waitFor("hideDockIcon"));
    EXPECT_TRUE(watching.hideDockIcon());
    tarvik::test::writeFile(configFile(home), "[General]\nhideDockIcon=false\n");
    heard.clear();
    EXPECT_TRUE(waitFor("hideDockIcon")); // still watched after the rename
}
