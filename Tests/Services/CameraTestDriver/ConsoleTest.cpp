#include "Tests/Services/CameraTestDriver/TypedConsole.h"

#include <gtest/gtest.h>

namespace {

TEST(ConsoleTest, WideAndNarrowTextGoToOneOutputInTheOrderOfWritingInUtf8) {
    TypedConsole console;
    console->writeLine("narrow é ", std::u16string(u"wide é \U0001F4F7"), std::string(" narrow"));
    console->write(u"wide, ");
    console->write("narrow, ");
    console->writeLine(u"wide");
    EXPECT_EQ(console.text(), "narrow é wide é \U0001F4F7 narrow\nwide, narrow, wide\n");
}

TEST(ConsoleTest, WideTextThatIsNotWellFormedIsLeftOut) {
    TypedConsole console;
    console->writeLine("[", std::u16string(1, u'\xD800'), "]");
    EXPECT_EQ(console.text(), "[]\n");
}

TEST(ConsoleTest, DoublesHaveSixDigitsBehindThePointAndOtherNumbersAreDecimal) {
    TypedConsole console;
    console->writeLine(-6.5, " ", 0.5F, " ", 1e21, " ", 1.0 / 3.0);
    console->writeLine(-7, " ", std::uint32_t{4294967295U}, " ", std::int64_t{-9223372036854775807});
    EXPECT_EQ(console.text(), "-6.500000 0.500000 1000000000000000000000.000000 0.333333\n"
                              "-7 4294967295 -9223372036854775807\n");
}

TEST(ConsoleTest, APromptIsFlushedBeforeTheReadAndHasNoLineEnd) {
    TypedConsole console("5");
    std::int32_t number = -1;
    console->ask("Which?> ", number);
    EXPECT_EQ(console.text(), "Which?> ");
    EXPECT_EQ(console.flushes(), 1);
    EXPECT_EQ(number, 5);
}

TEST(ConsoleTest, AnswersAreDividedByBlanksAndLineEnds) {
    TypedConsole console("  5 -7\n\n 1\r\n0");
    std::int32_t first = -1;
    std::int32_t second = -1;
    bool third = false;
    bool fourth = true;
    console->ask("", first);
    console->ask("", second);
    console->ask("", third);
    console->ask("", fourth);
    EXPECT_EQ(first, 5);
    EXPECT_EQ(second, -7);
    EXPECT_TRUE(third);
    EXPECT_FALSE(fourth);
}

TEST(ConsoleTest, AReadThatFailsStores0AndLaterOnesStoreNothing) {
    TypedConsole console("abc 5");
    std::int32_t first = -1;
    std::int32_t second = -1;
    bool third = true;
    console->ask("a", first);
    console->ask("b", second);
    console->ask("c", third);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, -1);
    EXPECT_TRUE(third);
    EXPECT_EQ(console.text(), "abc") << "the prompts go on";
}

TEST(ConsoleTest, AReadAtTheEndOfTheInputStoresNothing) {
    TypedConsole console("5");
    std::int32_t number = -1;
    console->ask("", number);
    number = -1;
    console->ask("", number);
    EXPECT_EQ(number, -1);
}

TEST(ConsoleTest, ANumberTooLargeBecomesTheLargestAndFailsTheInput) {
    TypedConsole console("2147483648 5");
    std::int32_t first = -1;
    std::int32_t second = -1;
    console->ask("", first);
    console->ask("", second);
    EXPECT_EQ(first, 2147483647);
    EXPECT_EQ(second, -1);
}

TEST(ConsoleTest, AFlagOtherThan0And1IsTrueAndFailsTheInput) {
    TypedConsole console("2 0");
    bool first = false;
    bool second = true;
    console->ask("", first);
    console->ask("", second);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

TEST(ConsoleTest, AWordEndsAtABlankAndIsConvertedToWideText) {
    TypedConsole console("\n usb:\u00e9\U0001F4F7#1 rest");
    std::u16string word;
    console->ask("ID?>", word);
    EXPECT_EQ(word, u"usb:\u00e9\U0001F4F7#1");
    console->ask("ID?>", word);
    EXPECT_EQ(word, u"rest");
}

TEST(ConsoleTest, AWordThatIsNotUtf8IsEmpty) {
    TypedConsole console("\xff\xfe");
    std::u16string word = u"before";
    console->ask("ID?>", word);
    EXPECT_EQ(word, u"");
}

} // namespace
