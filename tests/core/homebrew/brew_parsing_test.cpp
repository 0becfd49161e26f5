#include "core/homebrew/brew_parsing.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

QByteArray fixture(const QString& rel) {
    QFile f(QStringLiteral(TARVIK_FIXTURES "/homebrew/") + rel);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

const BrewPackage* find(const std::vector<BrewPackage>& all, const QString& id) {
    for (const auto& p : all) {
        if (p.id == id) {
            return &p;
        }
    }
    return nullptr;
}

} // namespace

TEST(BrewParsing, ARealInventoryWithKegsLinkedAndNot) {
    const auto all =
        BrewParsing::parseInstalled(fixture("assembled/info_v2_installed_assembled.json"));
    ASSERT_EQ(all.size(), 115u);
    const BrewPackage* glib = find(all, "glib");
    ASSERT_TRUE(glib);
    EXPECT_EQ(glib->installedVersion, "2.86.3"); // the linked keg
    EXPECT_EQ(glib->tap, "homebrew/core");
    EXPECT_TRUE(glib->isDependency());
    EXPECT_FALSE(glib->dependencies.isEmpty());
    EXPECT_EQ(find(all, "icu4c@78")->installedVersion, "78.2"); // no linked keg: the last one
    EXPECT_TRUE(find(all, "libpng")->onRequest);

    const BrewPackage* discord = find(all, "discord");
    ASSERT_TRUE(discord);
    EXPECT_EQ(discord->kind, BrewPackageKind::Cask);
    EXPECT_EQ(discord->displayName, "Discord");
    EXPECT_EQ(discord->apps, QStringList{"Discord.app"});
    EXPECT_FALSE(discord->needsAdmin);
    EXPECT_TRUE(discord->onRequest);
    // Its uninstall runs pkgutil and deletes from /Applications as root: the askpass is needed.
    EXPECT_TRUE(find(all, "autofirma")->needsAdmin);
}

TEST(BrewParsing, MissingKeysAndWrongTypesSkipOneEntryNeverTheParse) {
    const auto all = BrewParsing::parseInstalled(R"({
      "formulae": [
        {"name": "a", "installed": [{"version": "1.0"}, {"version": "2.0", "installed_on_request": true}],
         "linked_keg": "1.0", "pinned": "yes", "dependencies": ["b", 7]},
        {"installed": [{"version": "1"}]},
        {"name": 42},
        "not an object",
        {"name": "b", "tap": "me/tap"}
      ],
      "casks": [{"token": "c", "installed": "3.1,abc", "name": [], "installed_time": 1700000000},
                {"token": "gone"}]
    })");
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].installedVersion, "1.0");
    EXPECT_FALSE(all[0].onRequest); // the linked keg's flag, not the last one's
    EXPECT_FALSE(all[0].pinned);    // "yes" is not a boolean
    EXPECT_EQ(all[0].dependencies, QStringList{"b"});
    EXPECT_EQ(all[1].installedVersion, "");
    EXPECT_EQ(all[1].tap, "me/tap");
    EXPECT_EQ(all[2].displayName, "c");
    EXPECT_EQ(all[2].tap, "homebrew/cask");
    EXPECT_EQ(all[2].installedAt, QDateTime::fromSecsSinceEpoch(1700000000));
    EXPECT_TRUE(BrewParsing::parseInstalled("{}").empty());
    EXPECT_TRUE(BrewParsing::parseInstalled("[]").empty());
    try {
        BrewParsing::parseInstalled("{\"formulae\": [");
        FAIL() << "expected BrewParseError";
    } catch (const BrewParseError& e) {
        EXPECT_EQ(e.message, "Couldn't read Homebrew's package list.");
    }
}

TEST(BrewParsing, OutdatedServicesAndTheMerge) {
    const auto outdated = BrewParsing::parseOutdated(fixture("brew_dart/outdated_v2.json"));
    ASSERT_EQ(outdated.size(), 53u);
    EXPECT_EQ(outdated[0],
              (BrewOutdated{"aom", BrewPackageKind::Formula, "3.13.1", "3.13.2", false}));
    const auto mine = BrewParsing::parseOutdated(R"({"formulae": [
        {"name": "a", "installed_versions": ["1.0", "1.1"], "current_version": "2.0", "pinned": true},
        {"name": "nover", "installed_versions": ["1.0"]}],
      "casks": [{"name": "c", "installed_versions": [], "current_version": "4.0", "pinned": true}]})");
    ASSERT_EQ(mine.size(), 2u);
    EXPECT_EQ(mine[0].installedVersion, "1.1");
    EXPECT_TRUE(mine[0].pinned);
    EXPECT_FALSE(mine[1].pinned); // casks are never pinned
    EXPECT_TRUE(BrewParsing::parseOutdated("[1, 2]").empty());

    const auto services = BrewParsing::parseServices(fixture("phpmon/brew-services-normal.json"));
    EXPECT_EQ(services.value("mailhog"), BrewServiceState::Running);
    EXPECT_EQ(services.value("nginx"), BrewServiceState::Stopped);
    const auto odd = BrewParsing::parseServices(
        R"([{"name": "x", "status": "error"}, {"name": "y", "status": "other", "pid": 5},
            {"name": "z", "status": "none", "pid": null}, {"status": "started"}])");
    EXPECT_EQ(odd.size(), 3);
    EXPECT_EQ(odd.value("x"), BrewServiceState::Failed);
    EXPECT_EQ(odd.value("y"), BrewServiceState::Running);
    EXPECT_EQ(odd.value("z"), BrewServiceState::Stopped);

    std::vector<BrewPackage> installed(3);
    installed[0].id = "a";
    installed[0].pinned = true;
    installed[0].installedVersion = "1.1";
    installed[1].id = "b";
    installed[1].dependencies = {"a"};
    installed[2].id = "c";
    installed[2].kind = BrewPackageKind::Cask;
    installed[2].dependencies = {"a"};
    const BrewSnapshot s = BrewSnapshot::merge(
        installed,
        {{"a", BrewPackageKind::Formula, "1.1", "2.0", true},
         {"c", BrewPackageKind::Formula, "1", "2", false} /* wrong kind: ignored */},
        {{"a", BrewServiceState::Running}, {"c", BrewServiceState::Running}});
    EXPECT_EQ(s.packages[0].latestVersion, "2.0");
    EXPECT_FALSE(s.packages[0].isOutdated()); // pinned
    EXPECT_TRUE(s.packages[0].isMajorJump());
    EXPECT_EQ(s.pinned().size(), 1u);
    EXPECT_TRUE(s.outdated().empty());
    EXPECT_FALSE(s.packages[2].latestVersion);
    EXPECT_EQ(s.packages[0].service, BrewServiceState::Running);
    EXPECT_FALSE(s.packages[2].service); // services are formulae
    EXPECT_EQ(s.packages[0].dependents, (QStringList{"b", "c"}));
    EXPECT_EQ(s.formulaeCount(), 2);
    EXPECT_EQ(s.casksCount(), 1);
}

TEST(BrewParsing, AThousandPackageInventoryParsesAndMergesWhole) {
    const QJsonObject real =
        QJsonDocument::fromJson(fixture("brew_dart/info_v2_installed.json")).object();
    QJsonArray formulae;
    for (int copy = 0; copy < 10; ++copy) {
        for (const auto& f : real.value("formulae").toArray()) {
            QJsonObject o = f.toObject();
            o["name"] = o["name"].toString() + QString("-%1").arg(copy);
            formulae.append(o);
        }
    }
    const QByteArray big =
        QJsonDocument(QJsonObject{{"formulae", formulae}, {"casks", QJsonArray{}}}).toJson();
    const auto all = BrewParsing::parseInstalled(big);
    ASSERT_EQ(all.size(), 1130u);
    const BrewSnapshot s = BrewSnapshot::merge(all, {}, {});
    EXPECT_EQ(s.formulaeCount(), 1130);
    EXPECT_EQ(find(s.packages, "glib-9")->installedVersion, "2.86.3");
}

TEST(BrewVersion, DisplayMajorAndMajorJumps) {
    EXPECT_EQ(BrewVersion::display("1.2.3,abc9"), "1.2.3");
    EXPECT_EQ(BrewVersion::display(""), "");
    EXPECT_EQ(BrewVersion::display(",,"), "");
    EXPECT_EQ(BrewVersion::major("v12.4"), 12);
    EXPECT_FALSE(BrewVersion::major("latest"));
    EXPECT_TRUE(BrewVersion::isMajorJump("1.9.3", "2.0.0"));
    EXPECT_FALSE(BrewVersion::isMajorJump("2023.10", "2024.01"));
    EXPECT_FALSE(BrewVersion::isMajorJump("1.2", "1.3"));
    EXPECT_FALSE(BrewVersion::isMajorJump("latest", "2.0"));
}

TEST(BrewParsing, SizesComeFromTheCellarAndCaskroomAndUpdatesFromFetchHead) {
    QTemporaryDir d;
    const BrewEnvironment env{d.path() + "/bin/brew", d.path(), "4.3.5"};
    auto write = [&d](const QString& rel, int bytes) {
        QDir().mkpath((d.path() + "/" + rel).section('/', 0, -2));
        QFile f(d.path() + "/" + rel);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(bytes, 'b'));
    };
    write("Cellar/a/1.0/bin/a", 10000);
    write("Cellar/a/2.0/bin/a", 10000);
    write("Caskroom/c/1.0/c.zip", 5000);
    write("Apps/C.app/bin", 7000);
    std::vector<BrewPackage> ps(3);
    ps[0].id = "a";
    ps[1].id = "c";
    ps[1].kind = BrewPackageKind::Cask;
    ps[1].apps = {d.path() + "/Apps/C.app"};
    ps[2].id = "missing";
    measureBrewPackages(ps, env);
    EXPECT_EQ(*ps[0].size, 2 * 12288); // both versions
    EXPECT_EQ(*ps[1].size, 8192 + 8192);
    EXPECT_EQ(*ps[2].size, 0);
    EXPECT_FALSE(lastBrewUpdate(env));
    write("Library/Taps/homebrew/homebrew-core/.git/FETCH_HEAD", 10);
    EXPECT_TRUE(lastBrewUpdate(env));
}
