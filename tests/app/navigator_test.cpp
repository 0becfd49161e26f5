#include "app/shell/navigator.h"

#include <gtest/gtest.h>
#include <vector>

using namespace tarvik;

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
