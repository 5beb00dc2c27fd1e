#include "Tests/Client/FakeHub.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

using namespace CameraHub;
using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// The messages, without the NUL behind each.
std::vector<std::string> messagesTo(const FakeHub& hub) {
    std::vector<std::string> texts = hub.messages.requests();
    for (std::string& text : texts)
        text.pop_back();
    return texts;
}

std::string captureMessage(std::string_view parameters, int id = 1) {
    return R"({"id":)" + std::to_string(id) + R"(,"jsonrpc":"2.0","method":"camera:capture","params":)" +
           std::string(parameters) + "}";
}

/// The message that asks for a still.
std::string messageFor(const CaptureRequest& request) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    hub.connect().capture(request);
    return messagesTo(hub).at(0);
}

TEST(CameraHubClientTest, AsksForTheVersion) {
    FakeHub hub;
    hub.messages.answer(FakeHub::result(R"("2.9")"));
    EXPECT_EQ(hub.connect().version(), "2.9");
    EXPECT_THAT(messagesTo(hub), ElementsAre(R"({"id":1,"jsonrpc":"2.0","method":"camera:version","params":{}})"));
}

TEST(CameraHubClientTest, ListsTheCamerasAsTheHubDescribesThem) {
    FakeHub hub;
    hub.messages.answer(FakeHub::result(
        R"([{"exposureMaxValueInUs":1000000,"exposureMinValueInUs":122,"make":"Halden","model":"Größe 2",)"
        R"("resolutionX":1280,"resolutionY":720,"uid":"desk"},)"
        R"({"exposureMaxValueInUs":-2147483648,"exposureMinValueInUs":2147483647,"make":"","model":"",)"
        R"("resolutionX":1,"resolutionY":2,"uid":"/dev/v4l/\u0001"}])"));
    const std::vector<Camera> cameras = hub.connect().discover();
    ASSERT_EQ(cameras.size(), 2U);
    EXPECT_EQ(cameras[0].uid, "desk");
    EXPECT_EQ(cameras[0].make, "Halden");
    EXPECT_EQ(cameras[0].model, "Größe 2");
    EXPECT_EQ(cameras[0].resolution.width, 1280);
    EXPECT_EQ(cameras[0].resolution.height, 720);
    EXPECT_EQ(cameras[0].shortestExposure, 122us);
    EXPECT_EQ(cameras[0].longestExposure, 1s);
    EXPECT_EQ(cameras[1].uid, "/dev/v4l/\x01");
    EXPECT_EQ(cameras[1].shortestExposure, 2147483647us);
    EXPECT_EQ(cameras[1].longestExposure, -2147483648us);
    EXPECT_THAT(messagesTo(hub), ElementsAre(R"({"id":1,"jsonrpc":"2.0","method":"camera:discover","params":{}})"));
}

TEST(CameraHubClientTest, AHubWithoutCamerasHasAnEmptyList) {
    FakeHub hub;
    hub.messages.answer(FakeHub::result("[]"));
    EXPECT_TRUE(hub.connect().discover().empty());
}

TEST(CameraHubClientTest, TellsTheExposureInForceAndTheImage) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    const Capture capture = hub.connect().capture({"desk"});
    EXPECT_EQ(capture.exposure, 15625us);
    EXPECT_EQ(capture.imageId, FakeHub::oneId);
}

TEST(CameraHubClientTest, AnExposureThatCouldNotBeSetIsNone) {
    FakeHub hub;
    hub.messages.answer(
        FakeHub::result(R"({"exposureInUs":-9223372036854775808,"resid":")"s + std::string(FakeHub::oneId) + "\"}"));
    EXPECT_EQ(hub.connect().capture({"desk"}).exposure, std::nullopt);
}

TEST(CameraHubClientTest, AnExposureIsFiftyMillisecondsUnlessItIsGiven) {
    EXPECT_EQ(messageFor({"desk"}),
              captureMessage(R"({"exposureChangeDelayInMs":0,"exposureInUs":50000,"to":"desk"})"));
}

TEST(CameraHubClientTest, AnExposureGoesOutInMicroseconds) {
    EXPECT_EQ(messageFor({"desk", 20ms, 250ms}),
              captureMessage(R"({"exposureChangeDelayInMs":250,"exposureInUs":20000,"to":"desk"})"));
    EXPECT_EQ(messageFor({"desk", 1us, 0ms}),
              captureMessage(R"({"exposureChangeDelayInMs":0,"exposureInUs":1,"to":"desk"})"));
    EXPECT_EQ(messageFor({"desk", CaptureRequest::longestExposure, CaptureRequest::longestSettle}),
              captureMessage(R"({"exposureChangeDelayInMs":60000,"exposureInUs":2147483647,"to":"desk"})"));
}

// What chooses per cent is never 0, not even for the shortest exposure, since 0 stands for "not given".
TEST(CameraHubClientTest, PerCentGoOutAsTheGain) {
    for (const int percent : {0, 25, 100})
        EXPECT_EQ(messageFor({"desk", Percent(percent), 0ms}),
                  captureMessage(R"({"exposureChangeDelayInMs":0,"exposureInPercent":1,"gainInPercent":)" +
                                 std::to_string(percent) + R"(,"to":"desk"})"));
}

TEST(CameraHubClientTest, TextsGoOutAsTheyAre) {
    EXPECT_EQ(messageFor({"Gerät \"1\"\\\n"}),
              captureMessage(R"({"exposureChangeDelayInMs":0,"exposureInUs":50000,"to":"Gerät \"1\"\\\n"})"));
}

TEST(CameraHubClientTest, RedirectsTheDiagnostics) {
    FakeHub hub;
    hub.messages.answer(FakeHub::result("0"));
    hub.connect().redirectDiagnostics("/data/Diagnostics/mine");
    EXPECT_THAT(messagesTo(hub), ElementsAre(R"({"id":1,"jsonrpc":"2.0","method":"camera:redirectDiagnostics",)"
                                             R"("params":{"path":"/data/Diagnostics/mine"}})"));
}

TEST(CameraHubClientTest, ItsRequestsGoOneAfterTheOtherOnOneConnection) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    for (int id = 1; id <= 3; ++id) {
        hub.messages.answer(FakeHub::result(R"("2.9")", id));
        EXPECT_EQ(client.version(), "2.9");
    }
    EXPECT_THAT(messagesTo(hub).back(), HasSubstr(R"("id":3)"));
}

TEST(CameraHubClientTest, TheConnectionMovesAlong) {
    FakeHub hub;
    CameraHubClient first = hub.connect();
    CameraHubClient second = std::move(first);
    hub.messages.answer(FakeHub::result(R"("2.9")"));
    EXPECT_EQ(second.version(), "2.9");
    first = std::move(second);
    hub.messages.answer(FakeHub::result(R"("2.9")", 2));
    EXPECT_EQ(first.version(), "2.9");
}

TEST(CameraHubClientTest, AStillIsACaptureAndItsImage) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    hub.images.answer(FakeHub::image(FakeHub::png));
    const Still still = hub.connect().takeStill({"desk", 20ms});
    EXPECT_EQ(std::string(still.png.begin(), still.png.end()), FakeHub::png);
    EXPECT_EQ(still.capture.imageId, FakeHub::oneId);
    EXPECT_EQ(still.capture.exposure, 15625us);
    EXPECT_FALSE(still.wasTakenTwice);
}

TEST(CameraHubClientTest, AStillWhoseImageIsGoneIsTakenOnceMoreAndSaysSo) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    hub.messages.answer(FakeHub::captured(FakeHub::anotherId, 2));
    hub.images.answer(FakeHub::noImage());
    hub.images.answer(FakeHub::image(FakeHub::png));
    const Still still = hub.connect().takeStill({"desk", 20ms});
    EXPECT_EQ(still.capture.imageId, FakeHub::anotherId);
    EXPECT_TRUE(still.wasTakenTwice);
    const std::string parameters = R"({"exposureChangeDelayInMs":0,"exposureInUs":20000,"to":"desk"})";
    EXPECT_THAT(messagesTo(hub), ElementsAre(captureMessage(parameters), captureMessage(parameters, 2)));
}

TEST(CameraHubClientTest, AStillWhoseImageIsGoneTwiceIsGone) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    hub.messages.answer(FakeHub::captured(FakeHub::anotherId, 2));
    hub.images.answer(FakeHub::noImage());
    hub.images.answer(FakeHub::noImage());
    CameraHubClient client = hub.connect();
    EXPECT_THROW(client.takeStill({"desk"}), ImageGone);
    EXPECT_EQ(messagesTo(hub).size(), 2U);
    EXPECT_TRUE(client.isConnected());
}

TEST(CameraHubClientTest, AStillThatFailsOtherwiseIsNotTakenAgain) {
    FakeHub hub;
    hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    hub.images.answer("", ScriptedServer::Then::End);
    EXPECT_THROW(hub.connect().takeStill({"desk"}), ConnectionEnded);
    EXPECT_EQ(messagesTo(hub).size(), 1U);
}

} // namespace
