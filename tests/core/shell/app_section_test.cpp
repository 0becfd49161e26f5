#include "core/shell/app_section.h"
#include "core/shell/navigator.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

using namespace tarvik;

TEST(AppSection, SeventeenSectionsInSidebarOrderWithUniqueKeysThatRoundTrip) {
    const std::vector<std::string> expected{
        "overview",    "systemJunk", "largeFiles",  "duplicates", "projectJunk", "spaceLens",
        "monitor",     "devServers", "agents",      "speedTest",  "deviceCheck", "systemInfo",
        "uninstaller", "homebrew",   "dockFolders", "keepAwake",  "settings"};
    ASSERT_EQ(allSections().size(), expected.size());
    std::set<std::string_view> keys;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& s = allSections()[i];
        EXPECT_EQ(s.rawKey, expected[i]);
        EXPECT_EQ(static_cast<std::size_t>(s.section), i);
        EXPECT_EQ(&info(s.section), &s);
        EXPECT_EQ(sectionFromRawKey(s.rawKey), s.section);
        EXPECT_FALSE(s.title.empty());
        EXPECT_FALSE(s.shortTitle.empty());
        EXPECT_FALSE(s.symbol.empty());
        keys.insert(s.rawKey);
    }
    EXPECT_EQ(keys.size(), expected.size());
    EXPECT_EQ(sectionFromRawKey("Overview"), std::nullopt); // keys are case-sensitive
    EXPECT_EQ(sectionFromRawKey(""), std::nullopt);

    EXPECT_EQ(info(AppSection::Overview).title, "Smart Scan");
    EXPECT_EQ(info(AppSection::Overview).shortTitle, "Overview");
    EXPECT_EQ(info(AppSection::LargeFiles).title, "Large & Old Files");
    EXPECT_EQ(info(AppSection::ProjectJunk).symbol, "chevron.left.forwardslash.chevron.right");
    EXPECT_EQ(info(AppSection::DockFolders).shortTitle, "Dock");
}

TEST(SectionGroup, GroupsHoldTheirSectionsInOrderAndUtilitiesIsEmpty) {
    ASSERT_EQ(allGroups().size(), 4u);
    EXPECT_EQ(rawValue(allGroups()[0]), "Clean");
    EXPECT_EQ(rawValue(allGroups()[3]), "Utilities");

    const auto clean = sections(SectionGroup::Clean);
    EXPECT_EQ(std::vector<AppSection>(clean.begin(), clean.end()),
              (std::vector{AppSection::SystemJunk, AppSection::LargeFiles, AppSection::Duplicates,
                           AppSection::ProjectJunk}));
    EXPECT_EQ(sections(SectionGroup::Analyze).size(), 7u);
    EXPECT_EQ(sections(SectionGroup::Analyze).front(), AppSection::SpaceLens);
    EXPECT_EQ(sections(SectionGroup::Analyze).back(), AppSection::SystemInfo);
    const auto manage = sections(SectionGroup::Manage);
    EXPECT_EQ(std::vector<AppSection>(manage.begin(), manage.end()),
              (std::vector{AppSection::Uninstaller, AppSection::Homebrew, AppSection::DockFolders,
                           AppSection::KeepAwake}));
    EXPECT_TRUE(sections(SectionGroup::Utilities).empty());

    // Smart Scan and Settings sit outside every group.
    EXPECT_FALSE(info(AppSection::Overview).group.has_value());
    EXPECT_FALSE(info(AppSection::Settings).group.has_value());
    std::size_t grouped = 0;
    for (auto g : allGroups()) {
        grouped += sections(g).size();
        EXPECT_EQ(groupFromRawValue(rawValue(g)), g);
    }
    EXPECT_EQ(grouped, kSectionCount - 2);
    EXPECT_EQ(groupFromRawValue("Tools"), std::nullopt);
    EXPECT_EQ(groupFromRawValue("clean"), std::nullopt);
}

TEST(Navigator, SelectionNotifiesOnlyOnChangeAndKeyboardWalkStopsAtTheEnds) {
    Navigator nav;
    std::vector<AppSection> seen;
    QObject::connect(&nav, &Navigator::selectionChanged,
                     [&seen](AppSection s) { seen.push_back(s); });
    EXPECT_EQ(nav.selection(), AppSection::Overview);
    nav.selectPrevious();
    EXPECT_EQ(nav.selection(), AppSection::Overview);
    nav.select(AppSection::Overview);
    EXPECT_TRUE(seen.empty());
    nav.selectNext();
    EXPECT_EQ(nav.selection(), AppSection::SystemJunk);
    nav.select(AppSection::Settings);
    nav.selectNext();
    EXPECT_EQ(nav.selection(), AppSection::Settings);
    nav.selectPrevious();
    EXPECT_EQ(seen,
              (std::vector{AppSection::SystemJunk, AppSection::Settings, AppSection::KeepAwake}));
}
