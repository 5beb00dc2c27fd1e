#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"

#include "Tests/Support/LogRecorder.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const std::string communication = "LarkspurWindowsCameraHub.Device.Communication";
const std::string device = "LarkspurWindowsCameraHub.Device";

/// A connection without a socket, on a camera service without a platform.
class PavoCameraClientTest : public testing::Test {
protected:
    std::string reply(const std::string& message) { return client.messageHandler(message); }

    /// The what() of the exception that leaves the handler.
    std::string endOf(const std::string& message) {
        try {
            const std::string text = client.messageHandler(message);
            return "replied: " + text;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    PavoCameraClient client{-1, std::make_shared<CameraServer>()};
};

TEST_F(PavoCameraClientTest, VersionAnswersTheApplicationsVersion) {
    EXPECT_EQ(reply(R"({"jsonrpc":"2.0","id":1,"method":"camera:version"})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, TheIdComesBackUnchanged) {
    EXPECT_EQ(reply(R"({"id":1.5,"method":"camera:version"})"),
              "{\"id\":1.50,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
    EXPECT_EQ(reply(R"({"id":"x","method":"camera:version"})"),
              "{\"id\":\"x\",\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
    EXPECT_EQ(reply(R"({"id":null,"method":"camera:version"})"),
              "{\"id\":null,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
    EXPECT_EQ(reply(R"({"id":[1],"method":"camera:version"})"),
              "{\"id\":[1],\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
    EXPECT_EQ(reply(R"({"id":{"b":2,"a":1},"method":"camera:version"})"),
              "{\"id\":{\"a\":1,\"b\":2},\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, AMissingIdComesBackAsNull) {
    EXPECT_EQ(reply(R"({"method":"camera:version"})"), "{\"id\":null,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, TheProtocolVersionOfTheRequestIsNotRead) {
    EXPECT_EQ(reply(R"({"jsonrpc":[7],"id":1,"method":"camera:version"})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, TheParamsOfVersionAndDiscoverAreNotLookedAt) {
    EXPECT_EQ(reply(R"({"id":1,"method":"camera:version","params":"x"})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
    EXPECT_EQ(reply(R"({"id":1,"method":"camera:discover","params":7})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":[]}\n");
}

TEST_F(PavoCameraClientTest, AnUnknownMethodIsAnErrorWithoutACode) {
    EXPECT_EQ(reply(R"({"id":6,"method":"camera:dance"})"),
              "{\"error\":{\"message\":\"Method not supported: camera:dance\"},\"id\":6,\"jsonrpc\":\"2.0\"}\n");
}

TEST_F(PavoCameraClientTest, MethodNamesAreCaseSensitive) {
    EXPECT_EQ(reply(R"({"id":6,"method":"CAMERA:VERSION"})"),
              "{\"error\":{\"message\":\"Method not supported: CAMERA:VERSION\"},\"id\":6,\"jsonrpc\":\"2.0\"}\n");
}

TEST_F(PavoCameraClientTest, AMissingMethodIsTheUnknownMethodWithoutAName) {
    EXPECT_EQ(reply(R"({"id":6})"),
              "{\"error\":{\"message\":\"Method not supported: \"},\"id\":6,\"jsonrpc\":\"2.0\"}\n");
    EXPECT_EQ(reply(R"({"id":6,"method":null})"),
              "{\"error\":{\"message\":\"Method not supported: \"},\"id\":6,\"jsonrpc\":\"2.0\"}\n");
}

TEST_F(PavoCameraClientTest, AnArrayOrNullAtTheRootHasNeitherIdNorMethod) {
    const std::string expected =
        "{\"error\":{\"message\":\"Method not supported: \"},\"id\":null,\"jsonrpc\":\"2.0\"}\n";
    EXPECT_EQ(reply("[]"), expected);
    EXPECT_EQ(reply(R"([{"method":"camera:version"}])"), expected);
    EXPECT_EQ(reply("null"), expected);
}

TEST_F(PavoCameraClientTest, TextThatIsNoJsonGetsTheParseReply) {
    const std::string expected = "{\"code\":-32700,\"jsonrpc\":\"2.0\",\"message\":\"Parse Error\"}\n";
    EXPECT_EQ(reply("hello"), expected);
    EXPECT_EQ(reply(""), expected);
    EXPECT_EQ(reply("{"), expected);
    EXPECT_EQ(reply(std::string(100000, '[')), expected);
}

TEST_F(PavoCameraClientTest, OnlyTheFirstValueOfAMessageCounts) {
    EXPECT_EQ(reply(R"({"id":1,"method":"camera:version"} trailing {"id":2})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, CommentsAreAccepted) {
    EXPECT_EQ(reply("// first\n{\"id\":1, /* which? */ \"method\":\"camera:version\"}"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n");
}

TEST_F(PavoCameraClientTest, AMethodThatIsNoTextLeavesTheHandler) {
    for (const std::string method : {"7", "1.5", "[]", "{}"})
        EXPECT_EQ(endOf(R"({"id":1,"method":)" + method + "}"), "Type is not convertible to string") << method;
}

TEST_F(PavoCameraClientTest, ABooleanMethodIsItsWord) {
    EXPECT_EQ(reply(R"({"id":6,"method":true})"),
              "{\"error\":{\"message\":\"Method not supported: true\"},\"id\":6,\"jsonrpc\":\"2.0\"}\n");
}

TEST_F(PavoCameraClientTest, ARootWithoutMembersLeavesTheHandler) {
    for (const std::string root : {"7", "1.5", "\"text\"", "true"})
        EXPECT_THROW(client.messageHandler(root), std::runtime_error) << root;
}

TEST_F(PavoCameraClientTest, ACaptureWithAUidThatIsNoTextLeavesTheHandler) {
    for (const std::string uid : {"7", "[]", "{}"})
        EXPECT_EQ(endOf(R"({"method":"camera:capture","params":{"to":)" + uid + "}}"),
                  "Type is not convertible to string");
}

TEST_F(PavoCameraClientTest, ACaptureWithAGainThatIsNoNumberLeavesTheHandlerEvenWithoutAUid) {
    for (const std::string gain : {"\"10\"", "[]", "{}"})
        EXPECT_EQ(endOf(R"({"method":"camera:capture","params":{"gainInPercent":)" + gain + "}}"),
                  "Type is not convertible to double");
}

TEST_F(PavoCameraClientTest, ACaptureWithoutAUidIsAFailedResult) {
    const std::string expected =
        "{\"id\":3,\"jsonrpc\":\"2.0\",\"result\":{\"code\":1,\"message\":\"Unknown camera\"}}\n";
    EXPECT_EQ(reply(R"({"id":3,"method":"camera:capture","params":{}})"), expected);
    EXPECT_EQ(reply(R"({"id":3,"method":"camera:capture","params":{"to":""}})"), expected);
    EXPECT_EQ(reply(R"({"id":3,"method":"camera:capture","params":{"to":null}})"), expected);
    EXPECT_EQ(reply(R"({"id":3,"method":"camera:capture"})"), expected);
}

TEST_F(PavoCameraClientTest, ParamsThatAreNoObjectHaveNoMembers) {
    const std::string expected =
        "{\"id\":3,\"jsonrpc\":\"2.0\",\"result\":{\"code\":1,\"message\":\"Unknown camera\"}}\n";
    for (const std::string params : {"null", "[]", "[\"to\"]", "\"to\"", "7", "true"})
        EXPECT_EQ(reply(R"({"id":3,"method":"camera:capture","params":)" + params + "}"), expected) << params;
}

TEST_F(PavoCameraClientTest, ACaptureOfACameraThatIsNotKnownIsAFailedResult) {
    const std::string expected =
        "{\"id\":4,\"jsonrpc\":\"2.0\",\"result\":{\"code\":2,\"message\":\"Camera Disconnected\"}}\n";
    EXPECT_EQ(reply(R"({"id":4,"method":"camera:capture","params":{"to":"gone"}})"), expected);
    EXPECT_EQ(reply(R"({"id":4,"method":"camera:capture","params":{"to":true}})"), expected);
}

TEST_F(PavoCameraClientTest, MembersThatAskForAnInlineImageAreIgnored) {
    EXPECT_EQ(reply(R"({"id":4,"method":"camera:capture","params":{"to":"gone","encoding":"base64","image":1}})"),
              "{\"id\":4,\"jsonrpc\":\"2.0\",\"result\":{\"code\":2,\"message\":\"Camera Disconnected\"}}\n");
}

TEST_F(PavoCameraClientTest, ANumericParameterOfABadTypeIsLoggedAndTheCaptureGoesOn) {
    const auto logged = [this](const std::string& parameter) {
        LogRecorder log("Common.RunCatch");
        EXPECT_NE(reply(R"({"method":"camera:capture","params":{)" + parameter + "}}").find("Unknown camera"),
                  std::string::npos);
        const auto records = log.records();
        return records.size() == 1 ? records.front().level + " " + records.front().message : "not one record";
    };
    EXPECT_EQ(logged(R"("exposureInUs":"abc")"), "ERROR Caught exception: Type is not convertible to int");
    EXPECT_EQ(logged(R"("exposureInUs":2147483648)"),
              "ERROR Caught exception: unsigned integer out of signed int range");
    EXPECT_EQ(logged(R"("exposureInUs":-2147483649)"),
              "ERROR Caught exception: unsigned integer out of signed int range");
    EXPECT_EQ(logged(R"("exposureInUs":3e9)"), "ERROR Caught exception: Real out of signed integer range");
    EXPECT_EQ(logged(R"("exposureChangeDelayInMs":[])"), "ERROR Caught exception: Type is not convertible to int");
    EXPECT_EQ(logged(R"("exposureInPercent":"50")"), "ERROR Caught exception: Type is not convertible to double");
}

TEST_F(PavoCameraClientTest, AParseFailureIsLoggedWithTheMessageAndTheParsersReport) {
    LogRecorder log(communication);
    reply("hello");
    const auto records = log.records();
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(records[2].level, "ERROR");
    EXPECT_EQ(records[2].message,
              "<-- Error parsing [hello]:* Line 1, Column 1\n  Syntax error: value, object or array expected.\n");
}

TEST_F(PavoCameraClientTest, AMessageIsLoggedOnItsWayInAndOut) {
    LogRecorder log(communication);
    reply(R"({"id":1,"method":"camera:version"})");
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"--> {\"id\":1,\"method\":\"camera:version\"}", "parsing...",
                                                        "handling method -- camera:version",
                                                        "<-- {\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"2.9\"}\n"}));
    for (const LogRecord& record : log.records()) {
        EXPECT_EQ(record.level, "DEBUG");
        EXPECT_EQ(record.logger, communication);
    }
}

TEST_F(PavoCameraClientTest, WithoutDebugLoggingOnlyTheErrorLinesStay) {
    LogRecorder log(device, log4cxx::Level::getInfo());
    reply(R"({"id":1,"method":"camera:version"})");
    EXPECT_TRUE(log.records().empty());
    reply("hello");
    EXPECT_EQ(log.records().size(), 1u);
}

TEST_F(PavoCameraClientTest, AServiceExceptionIsLoggedOnTheDeviceLoggerWithNothingBeforeIt) {
    LogRecorder log(device, log4cxx::Level::getInfo());
    reply(R"({"id":6,"method":"camera:dance"})");
    ASSERT_EQ(log.records().size(), 1u);
    EXPECT_TRUE(log.contains("ERROR", device, "Method not supported: camera:dance"));
}

} // namespace
