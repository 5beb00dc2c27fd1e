#include "Framework/CXX/Json/MessageParsing.h"

#include "Framework/CXX/Json/HaldenPlainWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/reader.h>

#include <random>
#include <string>
#include <string_view>

using Halden::parseMessage;
using Halden::writeMessage;
using testing::HasSubstr;

namespace {

/// The value that the text holds, written again; the reader's report if it holds none.
std::string reread(const std::string& text) {
    Json::Value root;
    std::string errors;
    return parseMessage(text, root, errors) ? writeMessage(root) : errors;
}

bool parses(const std::string& text) {
    Json::Value root;
    std::string errors;
    return parseMessage(text, root, errors);
}

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(MessageParsingTest, AnyValueMayBeTheRoot) {
    EXPECT_EQ(reread("{\"a\":[1,null]}"), "{\"a\":[1,null]}\n");
    EXPECT_EQ(reread("[true]"), "[true]\n");
    EXPECT_EQ(reread("\"text\""), "\"text\"\n");
    EXPECT_EQ(reread("-7"), "-7\n");
    EXPECT_EQ(reread("1.5"), "1.50\n");
    EXPECT_EQ(reread("false"), "false\n");
    EXPECT_EQ(reread("null"), "null\n");
}

TEST(MessageParsingTest, TextBehindTheFirstValueIsIgnored) {
    EXPECT_EQ(reread("{\"id\":1} hello"), "{\"id\":1}\n");
    EXPECT_EQ(reread("{\"id\":1}{\"id\":2}"), "{\"id\":1}\n");
    EXPECT_EQ(reread("[1]]"), "[1]\n");
}

TEST(MessageParsingTest, CommentsAreAccepted) {
    EXPECT_EQ(reread("// before\n{ /* inside */ \"id\": 1 // behind\n}"), "{\"id\":1}\n");
}

TEST(MessageParsingTest, WhatIsNoJsonIsReported) {
    for (const std::string text : {"", "  ", "hello", "{", "[1,", "{\"a\":}", "{\"a\" 1}", "\"open", "tru"}) {
        Json::Value root;
        std::string errors;
        EXPECT_FALSE(parseMessage(text, root, errors)) << text;
        EXPECT_THAT(errors, HasSubstr("* Line 1, Column ")) << text;
    }
}

TEST(MessageParsingTest, TheReportIsTheLibrarysOwn) {
    EXPECT_EQ(reread("hello"), "* Line 1, Column 1\n  Syntax error: value, object or array expected.\n");
}

TEST(MessageParsingTest, AThousandLevelsAreReadAndWrittenBack) {
    const std::string arrays = repeated("[", 1000) + repeated("]", 1000);
    EXPECT_EQ(reread(arrays), arrays + "\n");
    const std::string objects = repeated("{\"a\":", 999) + "{}" + repeated("}", 999);
    EXPECT_EQ(reread(objects), objects + "\n");
}

TEST(MessageParsingTest, NestingTooDeepIsAParseErrorLikeAnyOther) {
    for (const std::string& text : {repeated("[", 1001) + repeated("]", 1001), repeated("[", 1000000),
                                    repeated("{\"a\":", 100000), repeated("[{\"a\":", 100000)}) {
        Json::Value root;
        std::string errors;
        EXPECT_FALSE(parseMessage(text, root, errors));
        EXPECT_EQ(errors, "* Exceeded stackLimit in readValue().\n");
    }
}

TEST(MessageParsingTest, LongMessagesAreRead) {
    const std::string text = '"' + std::string(20000000, 'x') + '"';
    EXPECT_EQ(reread(text), text + "\n");
    const std::string digits(100000, '9');
    EXPECT_FALSE(parses(digits)); // beyond the reals
    EXPECT_TRUE(parses("0." + digits));
}

class RandomText {
public:
    std::string next() {
        static constexpr std::string_view pieces[] = {
            "{",     "}",    "[", "]", ":",  ",", "\"", "\\",  "/*",    "*/",   "//",      "\n",   "\r",       "true",
            "false", "null", "1", "-", ".5", "e", "+9", "\\u", "\\ud8", "dc00", "\"a\":1", "\xFF", "\xC3\xA9", " "};
        std::uniform_int_distribution<std::size_t> piece(0, std::size(pieces) - 1);
        std::string text;
        for (int i = std::uniform_int_distribution<int>(0, 40)(_random); i > 0; --i)
            text += pieces[piece(_random)];
        return text;
    }

private:
    std::mt19937 _random{20261113};
};

TEST(MessageParsingTest, RandomTextIsReadOrRefusedAndNothingElse) {
    RandomText random;
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = random.next();
        Json::Value root;
        std::string errors;
        if (parseMessage(text, root, errors)) {
            ++accepted;
            EXPECT_TRUE(parses(writeMessage(root))) << text;
        } else {
            EXPECT_FALSE(errors.empty()) << text;
        }
    }
    EXPECT_GT(accepted, 100);
}

// The library's reader that collects comments: they are what our own leaves out, and all.
std::string rereadWithComments(const std::string& text) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader;
    Json::Value root;
    return reader.parse(text, root, true) ? writeMessage(root) : reader.getFormattedErrorMessages();
#pragma GCC diagnostic pop
}

TEST(MessageParsingTest, ToLeaveCommentsOutChangesNeitherValuesNorReports) {
    RandomText random;
    int commented = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = "[1 /* one */, // two\n" + random.next();
        const std::string read = reread(text);
        EXPECT_EQ(read, rereadWithComments(text)) << text;
        commented += read.starts_with('[') ? 1 : 0;
    }
    EXPECT_GT(commented, 100);
}

TEST(MessageParsingTest, BytesOutsideUtf8AreKept) {
    const std::string text = "\"\xFF\xC3(\xED\xA0\x80\"";
    EXPECT_EQ(reread(text), text + "\n");
}

} // namespace
