#include "Services/LarkspurWindowsCameraHub/CameraServer.h"

#include "Services/LarkspurWindowsCameraHub/Exceptions.h"
#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <functional>
#include <limits>

namespace {

using Halden::LarkspurWindowsCameraHub::Exceptions::winrtExceptionWrapper;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

constexpr const char* captureCall = "MediaCapture.CapturePhotoToStreamAsync";
constexpr const char* autoCapabilities =
    R"({"AutoModeSupported":true,"Max":0.0,"Min":0.0,"Step":0.0,"Supported":false})";
constexpr const char* exposureCapabilities =
    R"({"AutoModeSupported":true,"Max":0.0,"Min":-13.0,"Step":1.0,"Supported":true})";

/// What one pass over the automatics asks of a camera that has the older exposure control alone.
Texts automaticsPass(const std::string& on) {
    const std::string controller = "D: VideoDeviceController";
    const std::string capabilities = "D: MediaDeviceControl.Capabilities ";
    return {controller,
            capabilities + "Exposure = " + exposureCapabilities,
            "D: MediaDeviceControl.TrySetAuto Exposure [" + on + "] = true",
            controller,
            capabilities + "Focus = " + autoCapabilities,
            controller,
            capabilities + "WhiteBalance = " + autoCapabilities};
}

Texts joined(std::initializer_list<Texts> parts) {
    Texts all;
    for (const Texts& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

const Texts openingCalls = {"MediaFrameSourceGroup.FindAllAsync",
                            "MediaFrameSourceGroup.FindAllAsync ended = [\"G\"]",
                            "D: MediaCapture.InitializeAsync [\"G\",1,2]",
                            "D: MediaCapture.InitializeAsync [\"G\",1,2] ended",
                            "D: MediaCapture.FrameSources = [\"S\"]",
                            "D: MediaFrameSource.SetFormatAsync [\"S\",0]",
                            "D: MediaFrameSource.SetFormatAsync [\"S\",0] ended",
                            "D: MediaCapture.FrameSources = [\"S\"]",
                            "D: MediaCapture.CreateFrameReaderAsync [\"S\"]",
                            "D: MediaCapture.CreateFrameReaderAsync [\"S\"] ended",
                            "D: MediaFrameReader.AcquisitionMode [0]",
                            "D: MediaFrameReader.StartAsync",
                            "D: MediaFrameReader.StartAsync ended = 0"};

const Texts rangeCalls = {"D: VideoDeviceController",
                          std::string("D: MediaDeviceControl.Capabilities Exposure = ") + exposureCapabilities};

Texts settingCalls(const std::string& exponent) {
    return {"D: VideoDeviceController", "D: MediaDeviceControl.TrySetValue Exposure [" + exponent + "] = true",
            "D: VideoDeviceController", "D: MediaDeviceControl.TryGetValue Exposure = true"};
}

const Texts stillCalls = {"D: MediaCapture.CapturePhotoToStreamAsync",
                          "D: MediaCapture.CapturePhotoToStreamAsync ended"};

const Texts closingCalls = {"D: MediaFrameReader.StopAsync", "D: MediaFrameReader.StopAsync ended",
                            "D: MediaCapture.Close"};

class CameraServerTest : public ServedCameras {
protected:
    CameraServer::CaptureResult capture(const std::shared_ptr<ConnectedCamera>& camera, int exposureInUs = 50000) {
        return server->captureImage(camera, exposureInUs, 0.0, 0, 0);
    }

    /// The text of the exception that a capture throws.
    std::string failureOf(const std::shared_ptr<ConnectedCamera>& camera, int exposureInUs = 50000) {
        try {
            capture(camera, exposureInUs);
        } catch (const winrtExceptionWrapper& failure) {
            return failure.what();
        }
        return "no failure";
    }
};

TEST_F(CameraServerTest, CamerasAreDiscoveredInTheOrderOfTheirUids) {
    start(severalCameras({"b", "a", "B"}, "{}"), 3);
    Texts uids;
    for (const CameraDescription& camera : server->discover())
        uids.push_back(camera.uid);
    EXPECT_EQ(uids, (Texts{"B", "a", "b"}));
}

TEST_F(CameraServerTest, ATextOfTheCamerasIsKeptUntilTheyChange) {
    int timesWritten = 0;
    const auto text = [&] {
        return server->textOfCameras([&] {
            ++timesWritten;
            std::string uids;
            for (const CameraDescription& camera : server->discover())
                uids += camera.uid + " ";
            return uids;
        });
    };
    start(severalCameras({"b", "a"}, "{}"), 2);
    EXPECT_EQ(*text(), "a b ");
    EXPECT_EQ(*text(), "a b ");
    EXPECT_EQ(timesWritten, 1);
    const auto before = text();
    changeScenario(R"("groups": [])");
    EXPECT_TRUE(waitUntil([&] { return text()->empty(); }));
    EXPECT_EQ(*before, "a b ");
    EXPECT_LE(timesWritten, 3);
}

TEST_F(CameraServerTest, WithoutCamerasNoneIsDiscovered) {
    useScenario(R"("groups": [])");
    EXPECT_TRUE(CameraServer().discover().empty());
}

TEST_F(CameraServerTest, ACaptureOnAFreshCameraAsksThesePlatformCallsInThisOrder) {
    startOne();
    auto camera = server->getCamera("D");
    capture(camera);
    camera.reset();
    EXPECT_EQ(news(), joined({openingCalls, automaticsPass("true"), automaticsPass("false"), rangeCalls,
                              settingCalls("-4.0"), stillCalls, closingCalls}));
}

TEST_F(CameraServerTest, ACaptureOnAnOpenCameraSetsTheExposureAndTakesTheStill) {
    startOne();
    const auto camera = server->getCamera("D");
    capture(camera);
    forget();
    capture(server->getCamera("D"), 125000);
    EXPECT_EQ(news(), joined({rangeCalls, settingCalls("-3.0"), stillCalls}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(0)})) << "the delay of the request, no convergence";
}

TEST_F(CameraServerTest, ACaptureWithAnUnchangedExposureReadsTheRangeAndTakesTheStill) {
    startOne();
    const auto camera = server->getCamera("D");
    capture(camera);
    forget();
    EXPECT_EQ(capture(server->getCamera("D")).exposure, microseconds(62500));
    EXPECT_EQ(news(), joined({rangeCalls, stillCalls}));
    EXPECT_TRUE(clock().sleeps().empty());
}

TEST_F(CameraServerTest, ACameraThatIsNotKnownIsNullAndLogged) {
    startOne();
    EXPECT_EQ(server->getCamera("gone"), nullptr);
    EXPECT_EQ(server->getCamera(""), nullptr);
    EXPECT_EQ(lines(), (Texts{"ERROR There is no known gone", "ERROR There is no known "}));
    EXPECT_TRUE(news().empty());
}

TEST_F(CameraServerTest, UidsAreComparedByteByByte) {
    start(severalCameras({"d", "D "}, "{}"), 2);
    for (const std::string uid : {"D", "d ", " d", "D"})
        EXPECT_EQ(server->getCamera(uid), nullptr) << uid;
    EXPECT_NE(server->getCamera("d"), nullptr);
}

TEST_F(CameraServerTest, ACameraThatNobodyHasOpenIsOpenedAndConverges) {
    startOne();
    const auto camera = server->getCamera("D");
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
    EXPECT_EQ(deviceLines().front(), "INFO Connected to camera uid D, camera name: Cam");
    EXPECT_EQ(deviceLines()[1],
              "DEBUG Turning on a preview stream to converge: [exposure] [focus] [WB] , camera name: Cam");
}

TEST_F(CameraServerTest, ACameraThatIsOpenIsReturnedAsItIs) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    EXPECT_EQ(server->getCamera("D"), camera);
    EXPECT_TRUE(news().empty());
    EXPECT_TRUE(clock().calls().empty());
    EXPECT_TRUE(log().records().empty());
}

TEST_F(CameraServerTest, ACameraClosesWithItsLastReferenceAndIsThenOpenedAnew) {
    startOne();
    auto camera = server->getCamera("D");
    auto other = camera;
    camera.reset();
    EXPECT_EQ(timesCalled("MediaCapture.Close"), 0u);
    forget();
    other.reset();
    EXPECT_EQ(news(), closingCalls);
    forget();
    camera = server->getCamera("D");
    EXPECT_EQ(news(), joined({openingCalls, automaticsPass("true"), automaticsPass("false")}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
}

TEST_F(CameraServerTest, AnOpenCameraThatHasLeftIsRefusedAndClosesWithItsReference) {
    startOne();
    auto camera = server->getCamera("D");
    changeScenario(R"("groups": [])");
    ASSERT_TRUE(waitForCameras(0));
    log().clear();
    EXPECT_EQ(server->getCamera("D"), nullptr);
    EXPECT_EQ(lines(), (Texts{"ERROR There is no known D"}));
    EXPECT_EQ(timesCalled("MediaCapture.Close"), 0u) << "this test still holds it";
    camera = server->getCamera("D");
    EXPECT_EQ(timesCalled("MediaCapture.Close"), 1u);
}

TEST_F(CameraServerTest, AFailureToOpenLeavesGetCameraAndTheNextRequestOpens) {
    startOne(withFaults("{}", fault("MediaFrameReader.StartAsync", R"("times": 1)")));
    const auto error = errorOf([&] { server->getCamera("D"); });
    EXPECT_EQ(error.code(), -7);
    EXPECT_EQ(error.message(), u"It broke.");
    EXPECT_TRUE(clock().sleeps().empty());
    EXPECT_NE(server->getCamera("D"), nullptr);
}

TEST_F(CameraServerTest, AFailureToConvergeLeavesGetCameraAndTheCameraCloses) {
    startOne(withFaults(R"({"exposureControl": {"supported": true}})",
                        fault("ExposureControl.SetAutoAsync", R"("after": 1, "times": 1)")));
    EXPECT_EQ(errorOf([&] { server->getCamera("D"); }).code(), -7);
    const Texts all = news();
    EXPECT_EQ(Texts(all.end() - 3, all.end()), closingCalls);
    EXPECT_EQ(deviceLines().back(), "INFO Disconnected from camera uid D, camera name: Cam");
    EXPECT_NE(server->getCamera("D"), nullptr);
}

TEST_F(CameraServerTest, ANullCameraGivesADefaultResultAndDoesNothing) {
    startOne();
    const auto result = capture(nullptr);
    EXPECT_EQ(result.imageId, "");
    EXPECT_EQ(result.exposure, microseconds(0));
    EXPECT_TRUE(log().records().empty());
    EXPECT_TRUE(news().empty());
}

TEST_F(CameraServerTest, MicrosecondsBeatPercent) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    EXPECT_EQ(server->captureImage(camera, 1000, 50, 75, 0).exposure, microseconds(976));
    EXPECT_EQ(lines(),
              (Texts{"DEBUG setting exposure as us", "DEBUG capturing photo", "DEBUG capturing photo -- done"}));
    EXPECT_EQ(callsOf("MediaDeviceControl.TrySetValue"), (Texts{"[-10.0]"}));
}

TEST_F(CameraServerTest, TheAmountOfAPercentageIsTheGain) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    server->captureImage(camera, 0, 50, 75, 0);
    EXPECT_EQ(lines(),
              (Texts{"DEBUG setting exposure as percent", "DEBUG capturing photo", "DEBUG capturing photo -- done"}));
    EXPECT_EQ(deviceLines().front(), "INFO Requested exposure 75 %., camera name: Cam");
    server->captureImage(camera, 0, 100, 25, 0);
    EXPECT_EQ(callsOf("MediaDeviceControl.TrySetValue"), (Texts{"[0.0]", "[-2.0]"}));
}

TEST_F(CameraServerTest, APercentageWithoutAGainIsTheControlsMinimum) {
    startOne();
    EXPECT_EQ(server->captureImage(server->getCamera("D"), 0, 50, 0, 0).exposure, microseconds(122));
    EXPECT_EQ(callsOf("MediaDeviceControl.TrySetValue"), (Texts{"[-13.0]"}));
}

TEST_F(CameraServerTest, TheDelayReachesTheExposure) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    server->captureImage(camera, 50000, 0, 0, 250);
    server->captureImage(camera, 0, 1, 100, -1);
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(250), milliseconds(4294967295)}));
}

/// A request without an exposure is a mistake of its client's that assertions stop at; without them the
/// capture is made with 50 ms.
void expectNoExposure(CameraServer& server, const std::shared_ptr<ConnectedCamera>& camera, double percent,
                      [[maybe_unused]] const std::function<void()>& checkFallback) {
#ifdef NDEBUG
    EXPECT_EQ(server.captureImage(camera, 0, percent, 75, 250).exposure, microseconds(62500));
    checkFallback();
#else
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(server.captureImage(camera, 0, percent, 75, 250), "Assertion `0' failed");
#endif
}

TEST_F(CameraServerTest, NeitherExposureIsAnErrorAndFallsBackTo50Milliseconds) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    expectNoExposure(*server, camera, 0.0, [&] {
        EXPECT_EQ(lines(), (Texts{"ERROR No valid exposure parsed in captureImage JSON request.",
                                  "DEBUG capturing photo", "DEBUG capturing photo -- done"}));
        EXPECT_EQ(deviceLines().front(), "INFO Requested exposure 50000 us., camera name: Cam");
        EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(250)}));
    });
}

TEST_F(CameraServerTest, APercentageBelowOneCountsAsNoExposureAtAll) {
    startOne();
    const auto camera = server->getCamera("D");
    forget();
    expectNoExposure(*server, camera, 0.9, [&] {
        EXPECT_EQ(lines().front(), "ERROR No valid exposure parsed in captureImage JSON request.");
    });
}

TEST_F(CameraServerTest, AnExposureThatCannotBeSetDoesNotStopTheCapture) {
    startOne("{}");
    const auto result = capture(server->getCamera("D"));
    EXPECT_EQ(result.exposure, exposureUnset);
    EXPECT_EQ(result.exposure.count(), std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(server->getImage(result.imageId).empty());
}

TEST_F(CameraServerTest, ACaptureThatThePlatformEndsWithAnErrorIsStoredEmpty) {
    startOne(withMembers(olderExposure(), R"("capture": {"outcome": "error"})"));
    const auto result = capture(server->getCamera("D"));
    EXPECT_EQ(result.imageId.size(), 36u);
    EXPECT_TRUE(server->getImage(result.imageId).empty());
    EXPECT_EQ(lines().back(), "DEBUG capturing photo -- done");
}

TEST_F(CameraServerTest, APlatformFailureReachesTheClientWithItsContext) {
    startOne(withFaults(olderExposure(), fault(captureCall, R"("times": 1)")));
    const auto camera = server->getCamera("D");
    forget();
    EXPECT_EQ(failureOf(camera), "captureImage failed: It broke.(-7)");
    EXPECT_EQ(lines(), (Texts{"DEBUG setting exposure as us", "DEBUG capturing photo"}));
}

TEST_F(CameraServerTest, AFailureOfTheExposureStopsBeforeTheStill) {
    // One use in the search for cameras, six in the convergence.
    startOne(withFaults(olderExposure(), fault("VideoDeviceController", R"("after": 7)")));
    const auto camera = server->getCamera("D");
    forget();
    EXPECT_EQ(failureOf(camera), "captureImage failed: It broke.(-7)");
    EXPECT_EQ(lines(), (Texts{"DEBUG setting exposure as us"}));
    EXPECT_EQ(timesCalled(captureCall), 0u);
}

TEST_F(CameraServerTest, ACaptureThatTakesTooLongReachesTheClientAsAFailure) {
    startOne(withMembers(olderExposure(), R"("capture": {"outcome": "never"})"));
    const auto camera = server->getCamera("D");
    const auto shortened = shortenTimeLimits(100);
    EXPECT_EQ(failureOf(camera), "captureImage failed: Timed out waiting for camera capture.(-2147483636)");
    EXPECT_EQ(shortened->deadlines(), (std::vector{milliseconds(10000)}));
}

TEST_F(CameraServerTest, AFailedCaptureLeavesTheImageBeforeAndTheExposureThatWasSet) {
    startOne(withFaults(olderExposure(), fault(captureCall, R"("after": 1, "times": 1)")));
    const auto camera = server->getCamera("D");
    const std::string id = capture(camera).imageId;
    EXPECT_EQ(failureOf(camera, 125000), "captureImage failed: It broke.(-7)");
    EXPECT_FALSE(server->getImage(id).empty());
    forget();
    EXPECT_EQ(capture(camera, 125000).exposure, microseconds(125000));
    EXPECT_EQ(news(), joined({rangeCalls, stillCalls}));
    EXPECT_EQ(deviceLines()[1], "INFO Exposure has not changed since last request., camera name: Cam");
    EXPECT_TRUE(server->getImage(id).empty());
}

TEST_F(CameraServerTest, ACaptureOnACameraThatIsGoneIsAFailure) {
    startOne();
    const auto camera = server->getCamera("D");
    unplug();
    const std::string failure = failureOf(camera);
    EXPECT_TRUE(failure.starts_with("captureImage failed: MediaCapture.VideoDeviceController on D: ")) << failure;
}

} // namespace
