// The periodic Homebrew check against a stand-in brew in a temporary home.
#include "app/homebrew/brew_update_checker.h"
#include "core/settings/preferences.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace tarvik;

TEST(BrewUpdateChecker, UpdatesThenCountsWhatCanBeUpgraded) {
    test::TempHome home;
    Preferences prefs;
    const QString brew = home.path() + "/prefix/bin/brew";
    QDir().mkpath(home.path() + "/prefix/bin");
    QFile f(brew);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(("#!/bin/bash\necho \"$*\" >> '" + home.path() +
             "/calls'\ncase \"$1\" in\n"
             "  --version) echo 'Homebrew 4.4.1' ;;\n"
             "  outdated) echo '{\"formulae\": [{\"name\": \"a\", \"installed_versions\": [\"1\"], "
             "\"current_version\": \"2\", \"pinned\": false}, {\"name\": \"b\", "
             "\"installed_versions\": [\"1\"], \"current_version\": \"2\", \"pinned\": true}], "
             "\"casks\": []}' ;;\n  *) echo ok ;;\nesac\n")
                .toUtf8());
    f.close();
    QFile::setPermissions(brew, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    BrewUpdateChecker checker(prefs,
                              std::make_shared<BrewRunner>(BrewRunner::Options{{brew}, QString()}));
    int announced = -1;
    QObject::connect(&checker, &BrewUpdateChecker::outdatedCountChanged,
                     [&](int n) { announced = n; });
    ASSERT_TRUE(checker.checkIfDue());
    EXPECT_FALSE(checker.checkIfDue()); // running, and no longer due
    test::waitUntil([&] { return announced >= 0; });
    EXPECT_EQ(announced, 1); // the pinned one is not upgradable
    QFile calls(home.path() + "/calls");
    ASSERT_TRUE(calls.open(QIODevice::ReadOnly));
    EXPECT_EQ(calls.readAll(), "--version\nupdate\noutdated --json=v2\n");

    prefs.setValue(pref::kHomebrewCheckInterval, 0.0);
    prefs.setValue("homebrewLastCheck", QString());
    EXPECT_FALSE(checker.checkIfDue()); // checks switched off
}
