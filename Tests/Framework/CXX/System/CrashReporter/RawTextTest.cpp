#include "Framework/CXX/System/CrashReporter/RawText.h"

#include <gtest/gtest.h>

#include <limits>

namespace Halden::System {

TEST(RawTextTest, WritesNumbers) {
    RawText<100> text;
    text.decimal(0).text(" ").decimal(-5).text(" ").decimal(7, 3).text(" ").hex(0xBEEF).text(" ").hex(1, 4);
    EXPECT_EQ(text.view(), "0 -5 007 0xbeef 0x0001");
}

TEST(RawTextTest, WritesTheLargestNumbers) {
    RawText<100> text;
    text.decimal(std::numeric_limits<std::int64_t>::min()).text(" ");
    text.hex(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(text.view(), "-9223372036854775808 0xffffffffffffffff");
}

TEST(RawTextTest, CutsOffWhatDoesNotFit) {
    RawText<5> text;
    text.text("abc").text("defg").text("h");
    EXPECT_EQ(text.view(), "abcde");
    EXPECT_EQ(text.c_str()[5], '\0');
}

TEST(RawTextTest, NeverCutsInsideACharacter) {
    RawText<5> text;
    text.text("abc\U0001F4F7");
    EXPECT_EQ(text.view(), "abc");
}

TEST(RawTextTest, IsEmptyAfterClear) {
    RawText<5> text;
    text.text("abc").clear();
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
}

} // namespace Halden::System
