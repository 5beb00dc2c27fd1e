#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <json/json.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <regex>

namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

constexpr const char* captureCall = "MediaCapture.CapturePhotoToStreamAsync";

/// A connection without a socket, on a camera service with simulated cameras.
class CaptureHandlerTest : public ServedCameras {
protected:
    /// The service on those cameras, and a connection to it.
    void connect(const std::string& scenario, std::size_t cameras = 1) {
        start(scenario, cameras);
        client.emplace(-1, server);
    }

    void connectOne(const std::string& camera = olderExposure()) { connect(oneCamera(camera)); }

    static std::string captureMessage(const std::string& params) {
        return R"({"jsonrpc":"2.0","id":7,"method":"camera:capture","params":{)" + params + "}}";
    }

    std::string captureReply(const std::string& params) { return client->messageHandler(captureMessage(params)); }

    /// The reply's result, for parameters without an exposure of their own.
    Json::Value captureResult(const std::string& params) {
        Json::Value reply;
        std::istringstream(captureReply(params)) >> reply;
        return reply["result"];
    }

    /// Takes a still of that camera, which succeeds.
    void capture(PavoCameraClient& connection, const std::string& uid) {
        const std::string reply =
            connection.messageHandler(captureMessage(R"("to":")" + uid + R"(","exposureInUs":50000)"));
        EXPECT_NE(reply.find("\"resid\""), std::string::npos) << reply;
    }

    bool isOpen(const std::string& uid) const {
        bool open = false;
        for (const JournalLine& line : journal().lines())
            if (line.device == uid && (line.call == "MediaFrameReader.StartAsync" || line.call == "MediaCapture.Close"))
                open = line.call == "MediaFrameReader.StartAsync";
        return open;
    }

    std::optional<PavoCameraClient> client;
};

TEST_F(CaptureHandlerTest, TheCamerasAreListedInTheOrderOfTheirUids) {
    connect(severalCameras({"b", "a"}, olderExposure()), 2);
    EXPECT_EQ(client->messageHandler(R"({"jsonrpc":"2.0","id":2,"method":"camera:discover"})"),
              "{\"id\":2,\"jsonrpc\":\"2.0\",\"result\":["
              "{\"exposureMaxValueInUs\":1000000,\"exposureMinValueInUs\":122,\"make\":\"\",\"model\":\"\","
              "\"resolutionX\":32,\"resolutionY\":24,\"uid\":\"a\"},"
              "{\"exposureMaxValueInUs\":1000000,\"exposureMinValueInUs\":122,\"make\":\"\",\"model\":\"\","
              "\"resolutionX\":32,\"resolutionY\":24,\"uid\":\"b\"}]}\n");
}

TEST_F(CaptureHandlerTest, NoCamerasAreAnEmptyList) {
    connect(R"("groups": [])", 0);
    EXPECT_EQ(client->messageHandler(R"({"id":2,"method":"camera:discover"})"),
              "{\"id\":2,\"jsonrpc\":\"2.0\",\"result\":[]}\n");
}

TEST_F(CaptureHandlerTest, ACaptureAnswersTheImagesIdAndTheExposure) {
    connectOne();
    const std::string reply = captureReply(R"("to":"D","exposureInUs":50000)");
    const std::regex shape(
        R"x(\{"id":7,"jsonrpc":"2\.0","result":\{"exposureInUs":62500,"resid":"([-0-9a-f]{36})"\}\}\n)x");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(reply, parts, shape)) << reply;
    EXPECT_FALSE(server->getImage(parts[1]).empty());
}

TEST_F(CaptureHandlerTest, AnExposureThatCannotBeSetIsTheSmallestNumber) {
    connectOne("{}");
    const std::string reply = captureReply(R"("to":"D","exposureInUs":50000)");
    EXPECT_TRUE(reply.starts_with(
        "{\"id\":7,\"jsonrpc\":\"2.0\",\"result\":{\"exposureInUs\":-9223372036854775808,\"resid\":\""))
        << reply;
}

TEST_F(CaptureHandlerTest, ACameraThatIsNotNamedOrNotKnownIsAFailedResult) {
    connectOne();
    EXPECT_EQ(captureReply(R"("to":"","exposureInUs":50000)"),
              "{\"id\":7,\"jsonrpc\":\"2.0\",\"result\":{\"code\":1,\"message\":\"Unknown camera\"}}\n");
    EXPECT_EQ(captureReply(R"("to":"E","exposureInUs":50000)"),
              "{\"id\":7,\"jsonrpc\":\"2.0\",\"result\":{\"code\":2,\"message\":\"Camera Disconnected\"}}\n");
    EXPECT_EQ(lines(), (Texts{"ERROR There is no known E"}));
    EXPECT_TRUE(news().empty());
}

TEST_F(CaptureHandlerTest, APlatformFailureIsAnErrorReplyAndLogged) {
    connectOne(withFaults(olderExposure(), fault(captureCall, R"("times": 1)")));
    EXPECT_EQ(captureReply(R"("to":"D","exposureInUs":50000)"),
              "{\"error\":{\"message\":\"captureImage failed: It broke.(-7)\"},\"id\":7,\"jsonrpc\":\"2.0\"}\n");
    EXPECT_EQ(deviceLines().back(), "ERROR captureImage failed: It broke.(-7)");
    EXPECT_TRUE(isOpen("D"));
    capture(*client, "D");
}

TEST_F(CaptureHandlerTest, ACaptureThatTakesTooLongIsAnErrorReply) {
    connectOne(withMembers(olderExposure(), R"("capture": {"outcome": "never"})"));
    shortenTimeLimits(100);
    EXPECT_EQ(captureReply(R"("to":"D","exposureInUs":50000)"),
              "{\"error\":{\"message\":\"captureImage failed: Timed out waiting for camera capture.(-2147483636)\"},"
              "\"id\":7,\"jsonrpc\":\"2.0\"}\n");
}

TEST_F(CaptureHandlerTest, APlatformFailureWhileTheCameraOpensLeavesTheHandler) {
    connectOne(withFaults("{}", fault("MediaFrameReader.StartAsync")));
    EXPECT_EQ(errorOf([&] { captureReply(R"("to":"D","exposureInUs":50000)"); }).code(), -7);
}

TEST_F(CaptureHandlerTest, TheConnectionKeepsItsCameraOpen) {
    connectOne();
    capture(*client, "D");
    EXPECT_TRUE(isOpen("D"));
    forget();
    capture(*client, "D");
    EXPECT_TRUE(callsOf("MediaCapture.Close").empty());
    EXPECT_EQ(clock().sleeps(), std::vector<milliseconds>{}) << "no second convergence";
    client.reset();
    EXPECT_FALSE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, AnotherCameraOnTheSameConnectionReleasesTheFirst) {
    connect(severalCameras({"D", "E"}, olderExposure()), 2);
    capture(*client, "D");
    capture(*client, "E");
    EXPECT_FALSE(isOpen("D"));
    EXPECT_TRUE(isOpen("E"));
}

TEST_F(CaptureHandlerTest, TheFirstCameraStaysOpenWhileAnotherConnectionHoldsIt) {
    connect(severalCameras({"D", "E"}, olderExposure()), 2);
    PavoCameraClient other(-1, server);
    capture(other, "D");
    capture(*client, "D");
    EXPECT_EQ(timesCalled("MediaFrameReader.StartAsync"), 1u);
    capture(*client, "E");
    EXPECT_TRUE(isOpen("D"));
    capture(other, "E");
    EXPECT_FALSE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, ACaptureWithoutAUidLeavesTheHeldCameraUntouched) {
    connectOne();
    capture(*client, "D");
    captureReply(R"("to":"")");
    EXPECT_TRUE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, ACaptureOfACameraThatIsNotKnownReleasesTheHeldOne) {
    connectOne();
    capture(*client, "D");
    captureReply(R"("to":"E","exposureInUs":50000)");
    EXPECT_FALSE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, ACameraThatHasLeftIsDisconnectedAndReleased) {
    connectOne();
    capture(*client, "D");
    changeScenario(R"("groups": [])");
    ASSERT_TRUE(waitForCameras(0));
    EXPECT_EQ(captureResult(R"("to":"D","exposureInUs":50000)")["code"].asInt(), 2);
    EXPECT_FALSE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, ACameraThatHasLeftStaysOpenWhileAnotherConnectionHoldsIt) {
    connectOne();
    PavoCameraClient other(-1, server);
    capture(other, "D");
    capture(*client, "D");
    changeScenario(R"("groups": [])");
    ASSERT_TRUE(waitForCameras(0));
    captureReply(R"("to":"D","exposureInUs":50000)");
    EXPECT_TRUE(isOpen("D"));
    other.messageHandler(captureMessage(R"("to":"D","exposureInUs":50000)"));
    EXPECT_FALSE(isOpen("D"));
}

TEST_F(CaptureHandlerTest, ADelayOfABadTypeIsHalfASecondAndNoDelayIsNone) {
    connectOne();
    capture(*client, "D");
    forget();
    captureReply(R"("to":"D","exposureInUs":1000,"exposureChangeDelayInMs":"abc")");
    captureReply(R"("to":"D","exposureInUs":2000)");
    captureReply(R"("to":"D","exposureInUs":4000,"exposureChangeDelayInMs":30)");
    captureReply(R"("to":"D","exposureInUs":8000,"exposureChangeDelayInMs":-1)");
    EXPECT_EQ(clock().sleeps(),
              (std::vector{milliseconds(500), milliseconds(0), milliseconds(30), milliseconds(4294967295)}));
}

TEST_F(CaptureHandlerTest, ThePercentageSelectsAndTheGainIsTheAmountBothTruncated) {
    connectOne();
    EXPECT_EQ(captureResult(R"("to":"D","exposureInPercent":1.9,"gainInPercent":25.9)")["exposureInUs"].asInt(),
              250000);
    EXPECT_EQ(captureResult(R"("to":"D","exposureInPercent":-1.9,"gainInPercent":50)")["exposureInUs"].asInt(), 500000);
    EXPECT_EQ(captureResult(R"("to":"D","exposureInPercent":50)")["exposureInUs"].asInt(), 122);
    EXPECT_EQ(callsOf("MediaDeviceControl.TrySetValue"), (Texts{"[-2.0]", "[-1.0]", "[-13.0]"}));
    const auto logged = deviceLines();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "INFO Requested exposure 25 %., camera name: Cam"), logged.end());
}

TEST_F(CaptureHandlerTest, AnExposureOfABadTypeIsLoggedAndCountsAs0) {
    connectOne();
    for (const std::string exposure : {"\"abc\"", "[1000]", "{}", "2147483648", "-3e9"}) {
        const LogRecorder caught("Common.RunCatch");
        const auto result =
            captureResult(R"("to":"D","exposureInPercent":1,"gainInPercent":25,"exposureInUs":)" + exposure);
        EXPECT_EQ(result["exposureInUs"].asInt(), 250000) << exposure << ": the percentage applies";
        EXPECT_EQ(caught.records().size(), 1u) << exposure;
    }
}

TEST_F(CaptureHandlerTest, NullCountsAsAbsentAndBooleansAsOneAndZero) {
    connectOne();
    const LogRecorder caught("Common.RunCatch");
    const auto exposureOf = [this](const std::string& parameters) {
        return captureResult(R"("to":"D",)" + parameters)["exposureInUs"].asInt();
    };
    EXPECT_EQ(exposureOf(R"("exposureInUs":null,"exposureInPercent":true,"gainInPercent":50)"), 500000);
    EXPECT_EQ(exposureOf(R"("exposureInUs":false,"exposureInPercent":1,"gainInPercent":null)"), 122);
    forget();
    EXPECT_EQ(exposureOf(R"("exposureInUs":1000,"exposureInPercent":null,"exposureChangeDelayInMs":null)"), 976);
    EXPECT_EQ(exposureOf(R"("exposureInUs":2000,"exposureChangeDelayInMs":true)"), 1953);
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(0), milliseconds(1)}));
    EXPECT_EQ(caught.messages(), Texts{});
}

TEST_F(CaptureHandlerTest, PercentagesBeyondAnIntegerEndAtItsRange) {
    connectOne();
    EXPECT_EQ(captureResult(R"("to":"D","exposureInPercent":1e300,"gainInPercent":1e300)")["exposureInUs"].asInt(),
              1000000);
    const auto logged = deviceLines();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "INFO Requested exposure 2.14748e+09 %., camera name: Cam"),
              logged.end());
}

TEST_F(CaptureHandlerTest, MicrosecondsBeatPercent) {
    connectOne();
    const auto result = captureResult(R"("to":"D","exposureInUs":1000,"exposureInPercent":50,"gainInPercent":100)");
    EXPECT_EQ(result["exposureInUs"].asInt(), 976);
}

TEST_F(CaptureHandlerTest, ANegativeExposureIsRefusedByTheCameraAndTheCaptureGoesOn) {
    connectOne();
    const auto result = captureResult(R"("to":"D","exposureInUs":-5)");
    EXPECT_EQ(result["exposureInUs"].asInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(result["resid"].asString().size(), 36u);
}

} // namespace
