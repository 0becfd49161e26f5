#include "app/homebrew/brew_model.h"
#include "app/homebrew/brew_screen.h"
#include "app/shell/empty_state.h"
#include "core/settings/preferences.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

// A stand-in brew that replays real captures; "upgrade" fails the way a bad download does.
std::shared_ptr<BrewRunner> standInRunner(const QString& dir) {
    const QString f = TARVIK_FIXTURES "/homebrew";
    const QString brew = dir + "/bin/brew";
    QDir().mkpath(dir + "/bin");
    QFile file(brew);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(("#!/bin/bash\ncase \"$1\" in\n"
                "  --version) echo 'Homebrew 4.4.1' ;;\n"
                "  info) cat '" +
                f +
                "/assembled/info_v2_installed_assembled.json' ;;\n"
                "  outdated) cat '" +
                f +
                "/brew_dart/outdated_v2.json' ;;\n"
                "  services) exit 1 ;;\n"
                "  upgrade) echo '==> Fetching aom'; echo ' 45.5%'; echo 'Error: SHA256 mismatch'; "
                "exit 1 ;;\n"
                "  *) echo ok ;;\nesac\n")
                   .toUtf8());
    file.close();
    QFile::setPermissions(brew, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return std::make_shared<BrewRunner>(BrewRunner::Options{{brew}, QString()});
}

} // namespace

TEST(BrewScreen, ListsFiltersAndExplainsAFailedUpgradeWithRetry) {
    test::TempHome home;
    Preferences prefs;
    BrewModel model(prefs, standInRunner(home.path() + "/prefix"));
    BrewScreen screen(model);
    model.load();
    ASSERT_TRUE(test::waitUntil([&] { return !model.isLoading(); }));
    EXPECT_TRUE(model.loadError().isEmpty()) << model.loadError().toStdString();
    EXPECT_EQ(screen.packages()->topLevelItemCount(),
              115);      // services failing leaves the list whole
    screen.setFilter(1); // outdated
    EXPECT_EQ(screen.packages()->topLevelItemCount(), 53);
    screen.setSearch("aom");
    EXPECT_EQ(screen.packages()->topLevelItemCount(), 1);

    model.upgrade({"aom"});
    ASSERT_TRUE(test::waitUntil([&] { return !model.isRunning(); }));
    EXPECT_EQ(model.log().size(), 3);
    EXPECT_EQ(model.log()[2].marker, BrewLogLine::Marker::Critical);
    EXPECT_EQ(model.progress().phase, BrewProgressTracker::Phase::Fetching);
    EXPECT_DOUBLE_EQ(*model.progress().percent, 0.455);
    EXPECT_EQ(screen.failureText(),
              "The download didn't match its checksum. It may have been interrupted.");
    EXPECT_EQ(model.failure()->retryLabel, "Retry");
}

TEST(BrewScreen, WithoutHomebrewItSaysSoAndHowToGetIt) {
    test::TempHome home;
    Preferences prefs;
    BrewModel model(
        prefs, std::make_shared<BrewRunner>(BrewRunner::Options{{"/nowhere/brew"}, QString()}));
    BrewScreen screen(model);
    screen.show();
    ASSERT_TRUE(test::waitUntil([&] { return model.isNotInstalled() && !model.isLoading(); }));
    EXPECT_EQ(model.loadError(), "Homebrew isn't installed");
    EXPECT_FALSE(model.snapshot());
    // The page says so and how to get it, instead of an empty list of disabled buttons.
    auto* missing = screen.findChild<EmptyState*>("brewNotInstalled");
    ASSERT_NE(missing, nullptr);
    EXPECT_TRUE(missing->isVisible());
    EXPECT_TRUE(missing->sentence().contains("https://brew.sh"));
    EXPECT_FALSE(screen.packages()->isVisible());
    missing->action()->click(); // looks again
    EXPECT_TRUE(model.isLoading());
    ASSERT_TRUE(test::waitUntil([&] { return !model.isLoading(); }));
}
