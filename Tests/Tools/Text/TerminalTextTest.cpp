#include "Tools/Text/TerminalText.h"

#include <gtest/gtest.h>

using namespace CommandLine;

TEST(TerminalTextTest, LettersOfAllScriptsArePrintable) {
    EXPECT_EQ(printable("Ger\u00e4t \u76f8\u6a5f \U0001f4f7"), "Ger\u00e4t \u76f8\u6a5f \U0001f4f7");
}

TEST(TerminalTextTest, WhatCouldSteerATerminalIsReplaced) {
    EXPECT_EQ(printable("a\x1b[2Jb\n\t\x7f"), "a\ufffd[2Jb\ufffd\ufffd\ufffd");
    EXPECT_EQ(printable("a\u009bb"), "a\ufffdb"); // the control sequence introducer of one character
    EXPECT_EQ(printable(std::string_view("a\0b", 3)), "a\ufffdb");
}

TEST(TerminalTextTest, EachBrokenByteIsReplaced) {
    EXPECT_EQ(printable("a\xff\xc3"), "a\ufffd\ufffd");
    EXPECT_EQ(printable("\xed\xa0\x80"), "\ufffd\ufffd\ufffd"); // half a surrogate pair
}

TEST(TerminalTextTest, TheWidthCountsColumns) {
    EXPECT_EQ(displayWidth("Ger\u00e4t"), 5);
    EXPECT_EQ(displayWidth("\u76f8\u6a5f"), 4);
    EXPECT_EQ(displayWidth("a\u0308"), 1);
    EXPECT_EQ(displayWidth(""), 0);
}

TEST(TerminalTextTest, WhatIsCutKeepsWithinItsColumns) {
    EXPECT_EQ(shortened("camera", 6), "camera");
    EXPECT_EQ(shortened("camera", 5), "came\u2026");
    EXPECT_EQ(shortened("camera", 1), "\u2026");
    EXPECT_EQ(shortened("\u76f8\u6a5f", 3), "\u76f8\u2026");
    EXPECT_EQ(shortened("\u76f8\u6a5f", 2), "\u2026");
}
