// File names are bytes: every name survives the trip into a QString and back unchanged.
#include "core/sys/file_names.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace tarvik;

TEST(FileNames, EveryByteStringComesBackExactlyAndDistinctNamesStayDistinct) {
    const std::string names[] = {
        "plain.txt",
        "copy\xe9.jpg",         // Latin-1 é
        "copy\xef\xbf\xbd.jpg", // U+FFFD written out in UTF-8
        "bad\xff.txt",
        "\xc3\xa9t\xc3\xa9",      // valid UTF-8 "été"
        "emoji \xf0\x9f\x8e\x89", // a pair of surrogates in UTF-16
        "\xc0\xaf",               // an overlong "/"
        "\xed\xa0\x80",           // a UTF-16 surrogate encoded as UTF-8
        "\xf4\x90\x80\x80",       // past U+10FFFF
        "cut \xe2\x82",           // a sequence cut short
        "\xed\xb2\x80",           // the bytes of U+DC80 itself
        std::string("\x80\x81\xfe", 3),
    };
    std::set<QString> decoded;
    for (const std::string& n : names) {
        const QString q = fileName::decode(n);
        EXPECT_EQ(fileName::encode(q), n) << n;
        decoded.insert(q);
    }
    EXPECT_EQ(decoded.size(), std::size(names)) << "two names became one";

    // All 256 single bytes, and every pair.
    for (int a = 1; a < 256; ++a) {
        const std::string one(1, static_cast<char>(a));
        ASSERT_EQ(fileName::encode(fileName::decode(one)), one) << a;
        for (int b = 1; b < 256; b += 7) {
            const std::string two = one + static_cast<char>(b);
            ASSERT_EQ(fileName::encode(fileName::decode(two)), two) << a << " " << b;
        }
    }
    // Valid UTF-8 is decoded as text, with no stray bytes.
    EXPECT_EQ(fileName::decode("\xc3\xa9t\xc3\xa9"), QString::fromUtf8("été"));
    EXPECT_FALSE(fileName::hasRawBytes(fileName::decode("emoji \xf0\x9f\x8e\x89")));
    EXPECT_TRUE(fileName::hasRawBytes(fileName::decode("bad\xff.txt")));
}

TEST(FileNames, StrayBytesAreShownEscapedAndTextIsShownAsItIs) {
    EXPECT_EQ(fileName::display(fileName::decode("bad\xff.txt")), "bad\\xFF.txt");
    EXPECT_EQ(fileName::display(fileName::decode("copy\xe9.jpg")), "copy\\xE9.jpg");
    EXPECT_EQ(fileName::display(fileName::decode("copy\xef\xbf\xbd.jpg")),
              QString::fromUtf8("copy\xef\xbf\xbd.jpg"));
    EXPECT_EQ(fileName::display(QString::fromUtf8("caf\xc3\xa9")), QString::fromUtf8("café"));
}
