#include "core/shell/app_section.h"

#include <gtest/gtest.h>
#include <set>
#include <string_view>
#include <vector>

using namespace tarvik;

TEST(AppSection, EverySectionHasItsOwnEntryAndAKeyThatRoundTrips) {
    ASSERT_EQ(allSections().size(), kSectionCount);
    std::set<std::string_view> keys;
    for (std::size_t i = 0; i < allSections().size(); ++i) {
        const auto& s = allSections()[i];
        EXPECT_EQ(static_cast<std::size_t>(s.section), i); // the table is in sidebar order
        EXPECT_EQ(&info(s.section), &s);
        EXPECT_EQ(sectionFromRawKey(s.rawKey), s.section);
        EXPECT_FALSE(s.title.empty() || s.shortTitle.empty() || s.symbol.empty()) << s.rawKey;
        keys.insert(s.rawKey);
    }
    EXPECT_EQ(keys.size(), kSectionCount);
    EXPECT_EQ(sectionFromRawKey("Overview"), std::nullopt); // keys are case-sensitive
    EXPECT_EQ(sectionFromRawKey(""), std::nullopt);
}

TEST(SectionGroup, EachGroupedSectionIsInOneGroupInSidebarOrder) {
    std::size_t grouped = 0;
    for (auto g : allGroups()) {
        const auto members = sections(g);
        for (std::size_t i = 0; i < members.size(); ++i) {
            EXPECT_EQ(info(members[i]).group, g);
            if (i > 0) {
                EXPECT_LT(members[i - 1], members[i]);
            }
        }
        grouped += members.size();
        EXPECT_EQ(groupFromRawValue(rawValue(g)), g);
    }
    // Smart Scan and Settings sit outside every group; every other section is in one.
    EXPECT_FALSE(info(AppSection::Overview).group.has_value());
    EXPECT_FALSE(info(AppSection::Settings).group.has_value());
    EXPECT_EQ(grouped, kSectionCount - 2);
    EXPECT_EQ(groupFromRawValue("clean"), std::nullopt);
}
