#include "Framework/CXX/Json/HaldenPlainWriter.h"
#include "Framework/CXX/Json/MessageParsing.h"
#include "Tests/Support/Growth.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

/// A message of about a size: the beginning, the piece as often as it fits, the end.
struct Message {
    const char* name;
    std::string begin;
    std::string piece; ///< a "#" in it counts up
    std::string end;
};

std::string ofSize(const Message& message, std::size_t size) {
    std::string text = message.begin;
    const std::size_t mark = message.piece.find('#');
    for (int count = 0; text.size() < size; ++count)
        if (mark == std::string::npos)
            text += message.piece;
        else
            text += message.piece.substr(0, mark) + std::to_string(count) + message.piece.substr(mark + 1);
    return text + message.end;
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

std::ostream& operator<<(std::ostream& out, const Message& message) { return out << message.name; }

class ParsingGrowthTest : public testing::TestWithParam<Message> {};

TEST_P(ParsingGrowthTest, IsLinear) {
    const auto readAndWrite = [](const std::string& text) {
        Json::Value root;
        std::string errors;
        if (Halden::parseMessage(text, root, errors))
            Halden::writeMessage(root);
    };
    EXPECT_LT(growth([&](std::size_t size) {
                  return [readAndWrite, text = ofSize(GetParam(), size)] { readAndWrite(text); };
              }),
              linearGrowth);
}

INSTANTIATE_TEST_SUITE_P(
    Json, ParsingGrowthTest,
    testing::Values(Message{"Comments", "[1", "/**/", "]"}, Message{"LineComments", "[1", "//\n", "]"},
                    Message{"CommentsBehindValues", "[1", "/* */,/**/1", "]"},
                    Message{"CommentsInFront", "", "/**/", "1"}, Message{"CommentThatStaysOpen", "[1/*", "* ", ""},
                    Message{"CommentsBehindAnError", "[1 2", "/**/", "]"}, Message{"Blanks", "[", " \n", "]"},
                    Message{"Numbers", "[0", ",1", "]"}, Message{"OneLongNumber", "0.", "9", ""},
                    Message{"OneLongExponent", "1e", "0", "1"}, Message{"NumberThatIsTooLong", "", "9", ""},
                    Message{"Letters", "\"", "x", "\""}, Message{"Escapes", "\"", "\\\\\\n", "\""},
                    Message{"EscapedLetters", "\"", "\\u00e4", "\""},
                    Message{"EscapedPairs", "\"", "\\ud83d\\ude00", "\""}, Message{"HalfPairs", "\"", "\\ud83d", "\""},
                    Message{"TextThatStaysOpen", "\"", "\\\"", ""}, Message{"Names", "{", "\"#\":1,", "\"\":1}"},
                    Message{"OneNameAgainAndAgain", "{", "\"a\":1,", "\"a\":1}"},
                    Message{"LongNames", "{", '"' + std::string(1000, 'a') + "#\":1,", "\"\":1}"},
                    Message{"DeepArrays", "[", repeated("[", 900) + repeated("]", 900) + ',', "1]"},
                    Message{"DeepObjects", "[", repeated("{\"a\":", 900) + '1' + repeated("}", 900) + ',', "1]"},
                    Message{"TooDeep", "", "[", ""}, Message{"WrongValues", "[", "tru,", "]"},
                    Message{"WrongValueBehindLines", repeated("[", 900), "1,\n", "tru"},
                    Message{"MissingCommas", "[", "1 ", "]"}, Message{"MissingEnds", repeated("[", 900), "[],", ""},
                    Message{"MissingColons", repeated("{\"a\":", 900), "{\"a\" 1}", repeated("}", 900)}),
    [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
