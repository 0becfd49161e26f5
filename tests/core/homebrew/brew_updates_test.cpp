#include "core/homebrew/brew_updates.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(BrewUpdates, CheckIsDueOnlyAfterTheIntervalAndNeverWhenOff) {
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000);
    EXPECT_TRUE(isUpdateCheckDue(std::nullopt, now, 86400));
    EXPECT_FALSE(isUpdateCheckDue(now.addSecs(-3600), now, 86400));
    EXPECT_TRUE(isUpdateCheckDue(now.addSecs(-86400), now, 86400));
    EXPECT_TRUE(isUpdateCheckDue(now.addSecs(3600), now, 86400)); // the clock went back
    EXPECT_FALSE(isUpdateCheckDue(std::nullopt, now, 0));
    EXPECT_FALSE(isUpdateCheckDue(std::nullopt, now, -5));
}

TEST(BrewUpdates, SearchResultsUnderTheirHeadings) {
    const auto r = parseBrewSearch("\x1b[34m==>\x1b[0m \x1b[1mFormulae\x1b[0m\nwget\nwget2\n\n"
                                   "==> Casks\nwget-gui\n");
    EXPECT_EQ(r.formulae, (QStringList{"wget", "wget2"}));
    EXPECT_EQ(r.casks, QStringList{"wget-gui"});
    EXPECT_EQ(parseBrewSearch("jq\n").formulae, QStringList{"jq"}); // no headings: formulae
    const auto none = parseBrewSearch("Error: No formulae or casks found for \"zzz\".\n");
    EXPECT_TRUE(none.formulae.isEmpty() && none.casks.isEmpty());
}
