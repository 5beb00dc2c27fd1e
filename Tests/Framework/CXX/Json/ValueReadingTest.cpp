#include "Framework/CXX/Json/ValueReading.h"

#include "Framework/CXX/Json/MessageParsing.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <typeinfo>

using Halden::asDouble;
using Halden::asInt;
using Halden::asString;
using Halden::member;

namespace {

Json::Value json(const std::string& text) {
    Json::Value root;
    std::string errors;
    EXPECT_TRUE(Halden::parseMessage(text, root, errors)) << text << ": " << errors;
    return root;
}

const Json::Value& paramsMember(const Json::Value& request, const std::string& name) {
    return member(request, "params", name);
}

/// The text of the std::runtime_error that the operation throws.
template <typename Operation> std::string errorOf(Operation operation) {
    try {
        operation();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(typeid(error), typeid(std::runtime_error));
        return error.what();
    }
    return "(nothing thrown)";
}

std::string stringError(const std::string& text) {
    return errorOf([&] { asString(json(text)); });
}
std::string intError(const std::string& text) {
    return errorOf([&] { asInt(json(text)); });
}
std::string doubleError(const std::string& text) {
    return errorOf([&] { asDouble(json(text)); });
}

constexpr const char* unsignedText = "unsigned integer out of signed int range";
constexpr const char* realText = "Real out of signed integer range";

TEST(MemberTest, IsFoundByItsExactName) {
    const Json::Value request = json("{\"id\":[1],\"ID\":2,\"a\\u0000b\":3}");
    EXPECT_EQ(member(request, "id"), json("[1]"));
    EXPECT_EQ(member(request, "ID"), 2);
    EXPECT_EQ(member(request, std::string("a\0b", 3)), 3);
    EXPECT_TRUE(member(request, "a").isNull());
    EXPECT_TRUE(member(request, "method").isNull());
}

TEST(MemberTest, ArrayAndNullRootsHaveNoMembers) {
    EXPECT_TRUE(member(json("[{\"id\":1}]"), "id").isNull());
    EXPECT_TRUE(member(json("[]"), "method").isNull());
    EXPECT_TRUE(member(json("null"), "id").isNull());
    EXPECT_EQ(asString(member(json("[1,2]"), "method")), "");
}

TEST(MemberTest, NumberStringAndBooleanRootsRaise) {
    for (const std::string text : {"1", "-1", "1.5", "18446744073709551615", "\"text\"", "\"\"", "true", "false"}) {
        EXPECT_EQ(errorOf([&] { member(json(text), "id"); }), "Type has no members") << text;
        EXPECT_EQ(errorOf([&] { paramsMember(json(text), "to"); }), "Type has no members") << text;
    }
}

TEST(ParamsMemberTest, IsReadFromTheParams) {
    EXPECT_EQ(paramsMember(json("{\"params\":{\"to\":\"x\"},\"to\":\"y\"}"), "to"), "x");
    EXPECT_TRUE(paramsMember(json("{\"params\":{},\"to\":\"y\"}"), "to").isNull());
}

TEST(ParamsMemberTest, ParamsThatAreNoObjectHaveNoMembers) {
    for (const std::string params : {"null", "[]", "[\"to\"]", "\"to\"", "1", "2.5", "true"})
        EXPECT_TRUE(paramsMember(json("{\"params\":" + params + "}"), "to").isNull()) << params;
    EXPECT_TRUE(paramsMember(json("{}"), "to").isNull());
    EXPECT_TRUE(paramsMember(json("[]"), "to").isNull());
    EXPECT_TRUE(paramsMember(json("null"), "to").isNull());
}

TEST(AsStringTest, StringsStayAsTheyAre) {
    EXPECT_EQ(asString(json("\"camera:\xC3\xA9\xFF\"")), "camera:\xC3\xA9\xFF");
    EXPECT_EQ(asString(json("\"a\\u0000b\"")), std::string("a\0b", 3));
    EXPECT_EQ(asString(Json::Value(Json::stringValue)), "");
}

TEST(AsStringTest, NullIsEmptyAndBooleansAreTheirWords) {
    EXPECT_EQ(asString(json("null")), "");
    EXPECT_EQ(asString(json("true")), "true");
    EXPECT_EQ(asString(json("false")), "false");
}

TEST(AsStringTest, NumbersArraysAndObjectsRaise) {
    for (const std::string text : {"0", "-1", "18446744073709551615", "1.5", "[]", "[\"a\"]", "{}", "{\"a\":1}"})
        EXPECT_EQ(stringError(text), "Type is not convertible to string") << text;
}

TEST(AsIntTest, NullIsZeroAndBooleansAreOneAndZero) {
    EXPECT_EQ(asInt(json("null")), 0);
    EXPECT_EQ(asInt(json("true")), 1);
    EXPECT_EQ(asInt(json("false")), 0);
}

TEST(AsIntTest, WholeNumbersWithin32BitsAreKept) {
    EXPECT_EQ(asInt(json("20000")), 20000);
    EXPECT_EQ(asInt(json("-0")), 0);
    EXPECT_EQ(asInt(json("2147483647")), 2147483647);
    EXPECT_EQ(asInt(json("-2147483648")), std::numeric_limits<int>::min());
    EXPECT_EQ(asInt(Json::Value(Json::UInt64(2147483647))), 2147483647);
}

TEST(AsIntTest, FractionsAreCutOff) {
    EXPECT_EQ(asInt(json("1.999")), 1);
    EXPECT_EQ(asInt(json("-1.999")), -1);
    EXPECT_EQ(asInt(json("2147483647.0")), 2147483647);
    EXPECT_EQ(asInt(json("-2147483648.0")), std::numeric_limits<int>::min());
    EXPECT_EQ(asInt(json("2e4")), 20000);
    EXPECT_EQ(asInt(json("1e-300")), 0);
}

TEST(AsIntTest, WholeNumbersOutside32BitsRaiseTheUnsignedText) {
    for (const std::string text : {"2147483648", "4294967295", "-2147483649", "9223372036854775807",
                                   "-9223372036854775808", "9223372036854775808", "18446744073709551615"}) {
        EXPECT_EQ(intError(text), unsignedText) << text;
    }
}

TEST(AsIntTest, RealsOutside32BitsRaiseTheRealText) {
    // Whole numbers beyond 64 bits are reals to the reader.
    for (const std::string text : {"2147483647.5", "2147483648.0", "-2147483648.5", "3e9", "1e300", "-1e300",
                                   "18446744073709551616", "-9223372036854775809"}) {
        EXPECT_EQ(intError(text), realText) << text;
    }
    EXPECT_EQ(errorOf([] { asInt(Json::Value(std::numeric_limits<double>::quiet_NaN())); }), realText);
    EXPECT_EQ(errorOf([] { asInt(Json::Value(std::numeric_limits<double>::infinity())); }), realText);
}

TEST(AsIntTest, StringsArraysAndObjectsRaise) {
    for (const std::string text : {"\"abc\"", "\"1\"", "\"\"", "[]", "[1]", "{}"})
        EXPECT_EQ(intError(text), "Type is not convertible to int") << text;
}

TEST(AsDoubleTest, NumbersOfEveryKindAreKept) {
    EXPECT_EQ(asDouble(json("50")), 50.0);
    EXPECT_EQ(asDouble(json("-2147483649")), -2147483649.0);
    EXPECT_EQ(asDouble(json("18446744073709551615")), 18446744073709551615.0);
    EXPECT_EQ(asDouble(json("0.1")), 0.1);
    EXPECT_EQ(asDouble(json("1e300")), 1e300);
}

TEST(AsDoubleTest, NullIsZeroAndBooleansAreOneAndZero) {
    EXPECT_EQ(asDouble(json("null")), 0.0);
    EXPECT_EQ(asDouble(json("true")), 1.0);
    EXPECT_EQ(asDouble(json("false")), 0.0);
}

TEST(AsDoubleTest, StringsArraysAndObjectsRaise) {
    for (const std::string text : {"\"abc\"", "\"1.5\"", "\"\"", "[]", "[1]", "{}"})
        EXPECT_EQ(doubleError(text), "Type is not convertible to double") << text;
}

} // namespace
