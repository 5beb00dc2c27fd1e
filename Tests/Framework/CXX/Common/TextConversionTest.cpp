#include "Framework/CXX/Common/TextConversion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Halden::toUtf16;
using Halden::toUtf8;
using Halden::toUtf8WithReplacements;

namespace {

TEST(TextConversionTest, ConvertsBothWays) {
    const std::string utf8 = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string utf16 = u"A\u00E9\u20AC\U0001F600";
    EXPECT_EQ(toUtf8(utf16), utf8);
    EXPECT_EQ(toUtf16(utf8), utf16);
}

TEST(TextConversionTest, EmptyStaysEmpty) {
    EXPECT_EQ(toUtf8(u""), "");
    EXPECT_EQ(toUtf16(""), u"");
}

TEST(TextConversionTest, KeepsNulAndTheLastCodePoints) {
    EXPECT_EQ(toUtf8(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(toUtf16(std::string_view("a\0b", 3)), std::u16string(u"a\0b", 3));
    EXPECT_EQ(toUtf16("\xEF\xBF\xBF"), std::u16string(1, char16_t(0xFFFF)));
    EXPECT_EQ(toUtf16("\xF4\x8F\xBF\xBF"), u"\U0010FFFF");
}

TEST(TextConversionTest, SurrogateWithoutPartnerBecomesEmpty) {
    const std::vector<std::u16string> broken = {
        {u'a', char16_t(0xD800)},
        {char16_t(0xD800), u'a'},
        {u'a', char16_t(0xDC00)},
        {char16_t(0xDC00), char16_t(0xD800)},
        {char16_t(0xD800), char16_t(0xD800), char16_t(0xDC00)},
    };
    for (const std::u16string& text : broken)
        EXPECT_EQ(toUtf8(text), "") << "units: " << text.size();
}

TEST(TextConversionTest, Utf8ThatIsNotWellFormedBecomesEmpty) {
    const std::vector<std::string> broken = {
        "a\xC0\xAF",         // overlong, two bytes
        "a\xE0\x80\xAF",     // overlong, three bytes
        "a\xF0\x80\x80\xAF", // overlong, four bytes
        "a\xED\xA0\x80",     // a surrogate
        "a\xF4\x90\x80\x80", // beyond the last code point
        "a\xFF",             // never a byte of UTF-8
        "a\x80",             // a continuation with nothing before it
        "a\xC3",             // cut off
        "a\xE2\x82",         // cut off
        "a\xE2(\xA1",        // continuation missing
    };
    for (const std::string& text : broken)
        EXPECT_EQ(toUtf16(text), u"") << testing::PrintToString(text);
}

TEST(TextConversionTest, ReplacesSurrogatesWithoutPartnersWhereAsked) {
    EXPECT_EQ(toUtf8WithReplacements(u"A\u00E9\u20AC\U0001F600"), "A\u00E9\u20AC\U0001F600");
    EXPECT_EQ(toUtf8WithReplacements(std::u16string{u'a', char16_t(0xD800), u'b'}), "a\uFFFDb");
    EXPECT_EQ(toUtf8WithReplacements(std::u16string{char16_t(0xDC00), char16_t(0xD800)}), "\uFFFD\uFFFD");
    EXPECT_EQ(toUtf8WithReplacements(std::u16string{char16_t(0xD800), char16_t(0xD83D), char16_t(0xDE00)}),
              "\uFFFD\U0001F600");
    EXPECT_EQ(toUtf8WithReplacements(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(toUtf8WithReplacements(u""), "");
}

} // namespace
