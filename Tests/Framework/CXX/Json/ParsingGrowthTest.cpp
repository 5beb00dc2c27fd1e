#include "Framework/CXX/Json/HaldenPlainWriter.h"
#include "Framework/CXX/Json/MessageParsing.h"
#include "Tests/Support/Growth.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

class ParsingGrowthTest : public testing::TestWithParam<GrowingText> {};

TEST_P(ParsingGrowthTest, IsLinear) {
    const auto readAndWrite = [](const std::string& text) {
        Json::Value root;
        std::string errors;
        if (Halden::parseMessage(text, root, errors))
            Halden::writeMessage(root);
    };
    EXPECT_LT(growth([&](std::size_t size) {
                  return [readAndWrite, text = GetParam().ofSize(size)] { readAndWrite(text); };
              }),
              linearGrowth);
}

INSTANTIATE_TEST_SUITE_P(
    Json, ParsingGrowthTest,
    testing::Values(
        GrowingText{"Comments", "[1", "/**/", "]"}, GrowingText{"LineComments", "[1", "//\n", "]"},
        GrowingText{"CommentsBehindValues", "[1", "/* */,/**/1", "]"}, GrowingText{"CommentsInFront", "", "/**/", "1"},
        GrowingText{"CommentThatStaysOpen", "[1/*", "* ", ""},
        GrowingText{"CommentsBehindAnError", "[1 2", "/**/", "]"}, GrowingText{"Blanks", "[", " \n", "]"},
        GrowingText{"Numbers", "[0", ",1", "]"}, GrowingText{"OneLongNumber", "0.", "9", ""},
        GrowingText{"OneLongExponent", "1e", "0", "1"}, GrowingText{"NumberThatIsTooLong", "", "9", ""},
        GrowingText{"Letters", "\"", "x", "\""}, GrowingText{"Escapes", "\"", "\\\\\\n", "\""},
        GrowingText{"EscapedLetters", "\"", "\\u00e4", "\""}, GrowingText{"EscapedPairs", "\"", "\\ud83d\\ude00", "\""},
        GrowingText{"HalfPairs", "\"", "\\ud83d", "\""}, GrowingText{"TextThatStaysOpen", "\"", "\\\"", ""},
        GrowingText{"Names", "{", "\"#\":1,", "\"\":1}"},
        GrowingText{"OneNameAgainAndAgain", "{", "\"a\":1,", "\"a\":1}"},
        GrowingText{"LongNames", "{", '"' + std::string(1000, 'a') + "#\":1,", "\"\":1}"},
        GrowingText{"DeepArrays", "[", repeated("[", 900) + repeated("]", 900) + ',', "1]"},
        GrowingText{"DeepObjects", "[", repeated("{\"a\":", 900) + '1' + repeated("}", 900) + ',', "1]"},
        GrowingText{"TooDeep", "", "[", ""}, GrowingText{"WrongValues", "[", "tru,", "]"},
        GrowingText{"WrongValueBehindLines", repeated("[", 900), "1,\n", "tru"},
        GrowingText{"MissingCommas", "[", "1 ", "]"}, GrowingText{"MissingEnds", repeated("[", 900), "[],", ""},
        GrowingText{"MissingColons", repeated("{\"a\":", 900), "{\"a\" 1}", repeated("}", 900)}),
    [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
