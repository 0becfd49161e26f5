#include "core/text/counts.h"

#include <QLocale>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

// Sets the locale counts are written in for one test, and puts the one before back.
class LocaleForTest {
public:
    explicit LocaleForTest(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleForTest() { QLocale::setDefault(before_); }
    LocaleForTest(const LocaleForTest&) = delete;
    LocaleForTest& operator=(const LocaleForTest&) = delete;

private:
    QLocale before_;
};

} // namespace

TEST(CountOf, OnlyOneIsSingularAndLargeCountsAreGroupedAsTheLocaleGroupsThem) {
    {
        const LocaleForTest english(QLocale(QLocale::English, QLocale::UnitedStates));
        EXPECT_EQ(countOf(0, u"file", u"files"), "0 files");
        EXPECT_EQ(countOf(1, u"file", u"files"), "1 file");
        EXPECT_EQ(countOf(2, u"file", u"files"), "2 files");
        EXPECT_EQ(countOf(1204, u"file", u"files"), "1,204 files");
        EXPECT_EQ(countOf(1, u"process", u"processes"), "1 process");
        EXPECT_EQ(countOf(3'000'000'000LL, u"byte", u"bytes"), "3,000,000,000 bytes");
    }
    const LocaleForTest german(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(countOf(1204, u"copy", u"copies"), "1.204 copies");
    EXPECT_EQ(countOf(1, u"copy", u"copies"), "1 copy");
}
