#include "Framework/CXX/Json/HaldenPlainWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <string>

namespace {

std::string written(const Json::Value& value) { return Json::HaldenPlainWriter().write(value); }

std::string written(const std::string& text) { return written(Json::Value(text)); }

TEST(HaldenPlainWriterTest, IsAFastWriterLessTheLineFeed) {
    Json::Value object;
    object["text"] = "plain";
    object["list"].append(1);
    object["list"].append(Json::Value());
    object["yes"] = true;
    object["inner"]["id"] = -5;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const std::string fast = Json::FastWriter().write(object);
    Json::HaldenPlainWriter writer;
    Json::FastWriter& base = writer;
#pragma GCC diagnostic pop
    EXPECT_EQ(base.write(object), fast.substr(0, fast.size() - 1));
    EXPECT_EQ(written(object), "{\"inner\":{\"id\":-5},\"list\":[1,null],\"text\":\"plain\",\"yes\":true}");
}

TEST(WriteMessageTest, EndsInALineFeed) {
    Json::Value object;
    object["id"] = 1;
    EXPECT_EQ(Halden::writeMessage(object), written(object) + "\n");
    EXPECT_EQ(Halden::writeMessage(Json::Value()), "null\n");
}

TEST(HaldenPlainWriterTest, CanBeUsedAgain) {
    Json::HaldenPlainWriter writer;
    EXPECT_EQ(writer.write(Json::Value(1)), "1");
    EXPECT_EQ(writer.write(Json::Value(2)), "2");
}

TEST(HaldenPlainWriterTest, SimpleValues) {
    EXPECT_EQ(written(Json::Value()), "null");
    EXPECT_EQ(written(Json::Value(true)), "true");
    EXPECT_EQ(written(Json::Value(false)), "false");
    EXPECT_EQ(written(Json::Value(0)), "0");
    EXPECT_EQ(written(Json::Value(Json::Int64(-9223372036854775807 - 1))), "-9223372036854775808");
    EXPECT_EQ(written(Json::Value(Json::UInt64(18446744073709551615U))), "18446744073709551615");
}

TEST(HaldenPlainWriterTest, EmptyContainersAndEmptyStrings) {
    EXPECT_EQ(written(Json::Value(Json::arrayValue)), "[]");
    EXPECT_EQ(written(Json::Value(Json::objectValue)), "{}");
    EXPECT_EQ(written(std::string()), "\"\"");
    EXPECT_EQ(written(Json::Value(Json::stringValue)), "\"\"");
}

TEST(HaldenPlainWriterTest, MembersComeInAscendingByteOrder) {
    Json::Value object;
    for (const char* name : {"b", "a", "", "ab", "B", "\xC3\xA9", "\x7F"})
        object[name] = 0;
    EXPECT_EQ(written(object), "{\"\":0,\"B\":0,\"a\":0,\"ab\":0,\"b\":0,\"\x7F\":0,\"\xC3\xA9\":0}");
}

TEST(HaldenPlainWriterTest, NamesAreEscapedLikeTexts) {
    Json::Value object;
    object["a\"\n\x01"] = 0;
    EXPECT_EQ(written(object), "{\"a\\\"\\n\\u0001\":0}");
}

TEST(HaldenPlainWriterTest, ArrayGapsAreNull) {
    Json::Value array;
    array[2] = "x";
    EXPECT_EQ(written(array), "[null,null,\"x\"]");
}

TEST(HaldenPlainWriterTest, RealsHaveSixteenDigitsLessTrailingZeros) {
    EXPECT_EQ(written(Json::Value(1.0)), "1.0");
    EXPECT_EQ(written(Json::Value(0.1)), "0.10");
    EXPECT_EQ(written(Json::Value(2.5)), "2.50");
    EXPECT_EQ(written(Json::Value(-1.5)), "-1.50");
    EXPECT_EQ(written(Json::Value(0.0)), "0.0");
    EXPECT_EQ(written(Json::Value(-0.0)), "-0.0");
    EXPECT_EQ(written(Json::Value(100000.0)), "100000.0");
    EXPECT_EQ(written(Json::Value(1000.25)), "1000.250");
    EXPECT_EQ(written(Json::Value(0.0001)), "0.00010");
    EXPECT_EQ(written(Json::Value(1.0 / 3.0)), "0.3333333333333333");
    EXPECT_EQ(written(Json::Value(0.1 + 0.2)), "0.30");
    EXPECT_EQ(written(Json::Value(100.0 / 3.0)), "33.33333333333334");
}

TEST(HaldenPlainWriterTest, RealsWithAnExponentStayUncut) {
    EXPECT_EQ(written(Json::Value(1e20)), "1.000000000000000e+20");
    EXPECT_EQ(written(Json::Value(1e100)), "1.000000000000000e+100");
    EXPECT_EQ(written(Json::Value(1e-10)), "1.000000000000000e-10");
    EXPECT_EQ(written(Json::Value(1e-5)), "1.000000000000000e-05");
    EXPECT_EQ(written(Json::Value(-std::numeric_limits<double>::denorm_min())), "-4.940656458412465e-324");
}

TEST(HaldenPlainWriterTest, SixteenWholeDigitsEndInTheirPoint) {
    EXPECT_EQ(written(Json::Value(1e15)), "1000000000000000.");
    EXPECT_EQ(written(Json::Value(1234567890123456.0)), "1234567890123456.");
    EXPECT_EQ(written(Json::Value(123456789012345.0)), "123456789012345.0");
}

/// Writes numbers as German does.
class CommaPunctuation : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(HaldenPlainWriterTest, RealsHaveAPointInEveryLocale) {
    const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    const std::string text = written(Json::Value(1000.25));
    std::locale::global(previous);
    EXPECT_EQ(text, "1000.250");
}

TEST(HaldenPlainWriterTest, TwoCharacterEscapes) {
    EXPECT_EQ(written(std::string("\"\\\b\f\n\r\t")), R"("\"\\\b\f\n\r\t")");
    EXPECT_EQ(written(std::string("a/b")), "\"a/b\"");
}

TEST(HaldenPlainWriterTest, OtherControlCharactersBecomeFourHexadecimalDigits) {
    EXPECT_EQ(written(std::string("\x01\x0B\x1F\x20\x7F")), "\"\\u0001\\u000B\\u001F \x7F\"");
    EXPECT_EQ(written(std::string("a\0b", 3)), "\"a\\u0000b\"");
}

TEST(HaldenPlainWriterTest, AllOtherBytesPassThrough) {
    EXPECT_EQ(written(std::string("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")), "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"");
    EXPECT_EQ(written(std::string("\xFF\xC3(\x80")), "\"\xFF\xC3(\x80\"");
}

} // namespace
