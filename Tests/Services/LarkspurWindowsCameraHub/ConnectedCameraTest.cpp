#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <csignal>
#include <optional>
#include <thread>

namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

constexpr const char* captureCall = "MediaCapture.CapturePhotoToStreamAsync";

class ConnectedCameraTest : public OneCamera {
protected:
    void useCamera(const std::string& camera) { useScenario(oneCamera(camera)); }

    /// The id of the source that is picked; "null" for none.
    static std::string picked() {
        const auto capture = CameraHelper::CreateMediaCapture(found());
        const auto source = pickConvergenceSource(capture);
        return source ? Halden::toUtf8(source->Info()->Id()) : "null";
    }
};

TEST_F(ConnectedCameraTest, OpensTheCameraAndStartsItsStreamInThisOrder) {
    useCamera("{}");
    const ConnectedCamera camera(found());
    EXPECT_EQ(journalTexts(),
              (Texts{"MediaFrameSourceGroup.FindAllAsync", "MediaFrameSourceGroup.FindAllAsync ended = [\"G\"]",
                     "D: MediaCapture.InitializeAsync [\"G\",1,2]", "D: MediaCapture.InitializeAsync [\"G\",1,2] ended",
                     "D: MediaCapture.FrameSources = [\"S\"]", "D: MediaFrameSource.SetFormatAsync [\"S\",0]",
                     "D: MediaFrameSource.SetFormatAsync [\"S\",0] ended", "D: MediaCapture.FrameSources = [\"S\"]",
                     "D: MediaCapture.CreateFrameReaderAsync [\"S\"]",
                     "D: MediaCapture.CreateFrameReaderAsync [\"S\"] ended", "D: MediaFrameReader.AcquisitionMode [0]",
                     "D: MediaFrameReader.StartAsync", "D: MediaFrameReader.StartAsync ended = 0"}));
}

TEST_F(ConnectedCameraTest, LogsThatItIsConnected) {
    useCamera("{}");
    const ConnectedCamera camera(found());
    EXPECT_EQ(deviceLines(), (Texts{"INFO Connected to camera uid D, camera name: Cam"}));
}

TEST_F(ConnectedCameraTest, NamesItselfAsLogLinesEnd) {
    useCamera("{}");
    EXPECT_EQ(ConnectedCamera(found()).cameraNameSuffix(), ", camera name: Cam");
}

TEST_F(ConnectedCameraTest, StopsTheStreamThenClosesTheCameraThenLogsIt) {
    useCamera("{}");
    std::optional<ConnectedCamera> camera(found());
    forget();
    camera.reset();
    EXPECT_EQ(news(),
              (Texts{"D: MediaFrameReader.StopAsync", "D: MediaFrameReader.StopAsync ended", "D: MediaCapture.Close"}));
    EXPECT_EQ(deviceLines(), (Texts{"INFO Disconnected from camera uid D, camera name: Cam"}));
}

TEST_F(ConnectedCameraTest, ACameraThatIsGoneLetsGoWithoutComplaint) {
    useCamera("{}");
    std::optional<ConnectedCamera> camera(found());
    unplug();
    log().clear();
    camera.reset();
    EXPECT_EQ(timesCalled("MediaFrameReader.StopAsync"), 1u);
    EXPECT_EQ(timesCalled("MediaCapture.Close"), 1u);
    EXPECT_EQ(deviceLines(), (Texts{"INFO Disconnected from camera uid D, camera name: Cam"}));
}

TEST_F(ConnectedCameraTest, OpeningACameraThatThePlatformDoesNotHaveRaisesAtItsFirstUse) {
    useScenario(R"("groups": [])");
    EXPECT_EQ(errorOf([] { ConnectedCamera camera(found()); }).code(), winrt::result::illegalMethodCall);
    EXPECT_EQ(journalTexts().back(), "MediaCapture.FrameSources ! " + std::to_string(winrt::result::illegalMethodCall));
    EXPECT_TRUE(lines().empty());
    EXPECT_TRUE(deviceLines().empty());
}

TEST_F(ConnectedCameraTest, OnlyPhotoSourcesMakeTheReaderFail) {
    useScenario(sourcesOf({source("photo", "Photo")}));
    EXPECT_EQ(errorOf([] { ConnectedCamera camera(found()); }).code(), winrt::result::invalidArgument);
    EXPECT_EQ(callsOf("MediaCapture.CreateFrameReaderAsync"), (Texts{"[null]"}));
    EXPECT_EQ(timesCalled("MediaFrameReader.AcquisitionMode"), 0u);
    EXPECT_TRUE(deviceLines().empty());
}

/// A step of the opening that fails once, and what is then raised.
struct OpeningFault {
    const char* operation;
    const char* members;
    winrt::hresult raised;
    bool isLogged; ///< the opening itself caught the failure; the first use of the closed capture raises
};

class ConnectedCameraOpeningFaultTest : public OneCamera, public testing::WithParamInterface<OpeningFault> {};

TEST_P(ConnectedCameraOpeningFaultTest, RaisesAndLeavesTheCameraToTheNextAttempt) {
    const OpeningFault& step = GetParam();
    useScenario(oneCamera(withFaults("{}", fault(step.operation, step.members))));
    EXPECT_EQ(errorOf([] { ConnectedCamera camera(found()); }).code(), step.raised);
    EXPECT_EQ(linesOf("ERROR"), step.isLogged ? Texts{"It broke. -7"} : Texts{});
    EXPECT_TRUE(deviceLines().empty());
    EXPECT_EQ(timesCalled("MediaFrameReader.StopAsync"), 0u);
    EXPECT_EQ(timesCalled("MediaCapture.Close"), step.isLogged ? 1u : 0u);

    const ConnectedCamera again(found());
    EXPECT_EQ(deviceLines(), (Texts{"INFO Connected to camera uid D, camera name: Cam"}));
}

INSTANTIATE_TEST_SUITE_P(
    EachStep, ConnectedCameraOpeningFaultTest,
    testing::Values(OpeningFault{"MediaCapture.InitializeAsync", R"("times": 1)", winrt::result::closed, true},
                    OpeningFault{"MediaCapture.FrameSources", R"("times": 1)", winrt::result::closed, true},
                    OpeningFault{"MediaFrameSource.SetFormatAsync", R"("times": 1)", winrt::result::closed, true},
                    OpeningFault{"MediaCapture.FrameSources", R"("after": 1, "times": 1)", -7, false},
                    OpeningFault{"MediaCapture.CreateFrameReaderAsync", R"("times": 1)", -7, false},
                    OpeningFault{"MediaFrameReader.StartAsync", R"("times": 1)", -7, false}),
    [](const auto& tested) {
        const std::string operation = tested.param.operation;
        return operation.substr(operation.find('.') + 1) + (tested.param.isLogged ? "WhileOpening" : "");
    });

TEST_F(ConnectedCameraTest, AFailureToListTheGroupsRaisesAtTheFirstUse) {
    useScenario(oneCamera("{}", R"("faults": {)" + fault("MediaFrameSourceGroup.FindAllAsync") + "}"));
    EXPECT_EQ(errorOf([] { ConnectedCamera camera(found()); }).code(), winrt::result::closed);
    EXPECT_EQ(lines(), (Texts{"ERROR It broke. -7"}));
}

TEST_F(ConnectedCameraTest, OnlyVideoRecordSourcesGiveTheFirstOfThem) {
    useScenario(sourcesOf({source("photo", "Photo"), source("R1", "VideoRecord"), source("R2", "VideoRecord")}));
    EXPECT_EQ(picked(), "R1");
}

TEST_F(ConnectedCameraTest, AVideoPreviewSourceBeatsAVideoRecordSourceBeforeIt) {
    useScenario(sourcesOf({source("R1", "VideoRecord"), source("P1", "VideoPreview"), source("P2", "VideoPreview")}));
    EXPECT_EQ(picked(), "P1");
}

TEST_F(ConnectedCameraTest, ThePickedSourceIsComparedByItsStreamTypeAlone) {
    useScenario(sourcesOf({source("infrared", "VideoPreview", "Infrared"), source("colour", "VideoPreview")}));
    EXPECT_EQ(picked(), "infrared");
}

TEST_F(ConnectedCameraTest, PhotoAndAudioSourcesAreNeverPicked) {
    useScenario(sourcesOf({source("photo", "Photo"), source("audio", "Audio", "Audio")}));
    EXPECT_EQ(picked(), "null");
}

TEST_F(ConnectedCameraTest, TheReaderRunsOnThePickedSource) {
    useScenario(sourcesOf({source("R1", "VideoRecord"), source("P1", "VideoPreview")}));
    const ConnectedCamera camera(found());
    EXPECT_EQ(callsOf("MediaCapture.CreateFrameReaderAsync"), (Texts{"[\"P1\"]"}));
}

TEST_F(ConnectedCameraTest, ACaptureIsThePngOfOneStill) {
    useCamera("{}");
    ConnectedCamera camera(found());
    forget();
    const auto picture = Platform::Imaging::decodeImage(camera.capturePhotoAsRawPNG());
    EXPECT_EQ(picture.width, 32u);
    EXPECT_EQ(picture.height, 24u);
    EXPECT_EQ(news(), (Texts{"D: " + std::string(captureCall), "D: " + std::string(captureCall) + " ended"}));
    EXPECT_EQ(deviceLines(), (Texts{"DEBUG waiting... ", "DEBUG waiting... done"}));
    EXPECT_EQ(clock().deadlines(), (std::vector{milliseconds(10000)}));
    EXPECT_TRUE(clock().sleeps().empty());
}

TEST_F(ConnectedCameraTest, TheStreamRunsThroughAllCaptures) {
    useCamera("{}");
    ConnectedCamera camera(found());
    const auto first = camera.capturePhotoAsRawPNG();
    const auto second = camera.capturePhotoAsRawPNG();
    EXPECT_FALSE(first.empty());
    EXPECT_FALSE(second.empty());
    EXPECT_EQ(timesCalled("MediaFrameReader.StartAsync"), 1u);
    EXPECT_EQ(timesCalled("MediaFrameReader.StopAsync"), 0u);
}

TEST_F(ConnectedCameraTest, ACaptureThatCompletesWithAnErrorIsEmptyAndNoFailure) {
    useCamera(R"({"capture": {"outcome": "error"}})");
    ConnectedCamera camera(found());
    log().clear();
    EXPECT_TRUE(camera.capturePhotoAsRawPNG().empty());
    EXPECT_TRUE(journal().lines().back().hasError());
    EXPECT_EQ(deviceLines(), (Texts{"DEBUG waiting... ", "DEBUG waiting... done"}));
}

TEST_F(ConnectedCameraTest, ACaptureThatCannotBeStartedRaisesAndLogsNothing) {
    useCamera(withFaults("{}", fault(captureCall, R"("times": 1)")));
    ConnectedCamera camera(found());
    log().clear();
    const auto error = errorOf([&] { camera.capturePhotoAsRawPNG(); });
    EXPECT_EQ(error.code(), -7);
    EXPECT_EQ(error.message(), u"It broke.");
    EXPECT_TRUE(deviceLines().empty());
    EXPECT_FALSE(camera.capturePhotoAsRawPNG().empty()) << "the camera stays usable";
}

TEST_F(ConnectedCameraTest, ACaptureOnACameraThatIsGoneRaises) {
    useCamera("{}");
    ConnectedCamera camera(found());
    unplug();
    const auto error = errorOf([&] { camera.capturePhotoAsRawPNG(); });
    EXPECT_LT(error.code(), 0);
    EXPECT_NE(error.code(), winrt::result::changedState);
    EXPECT_NE(error.message().find(u"MediaCapture.CapturePhotoToStreamAsync on D"), std::u16string::npos);
}

TEST_F(ConnectedCameraTest, ACaptureThatTakesLongerThanItsLimitRaisesAndTheNextOneSucceeds) {
    useCamera(withFaults("{}", fault(captureCall, R"("fails": false, "delayMs": 600000, "times": 1)")));
    ConnectedCamera camera(found());
    log().clear();
    shortenTimeLimits(100);
    const auto error = errorOf([&] { camera.capturePhotoAsRawPNG(); });
    EXPECT_EQ(error.code(), winrt::result::changedState);
    EXPECT_EQ(error.message(), u"Timed out waiting for camera capture.");
    EXPECT_EQ(deviceLines(), (Texts{"DEBUG waiting... ", "DEBUG waiting... done"}));
    const auto clock = shortenTimeLimits(1);
    EXPECT_FALSE(camera.capturePhotoAsRawPNG().empty());
    EXPECT_EQ(clock->deadlines(), (std::vector{milliseconds(10000)}));
}

TEST_F(ConnectedCameraTest, ACaptureThatNeverCompletesRaisesTheSame) {
    useCamera(R"({"capture": {"outcome": "never"}})");
    ConnectedCamera camera(found());
    shortenTimeLimits(100);
    EXPECT_EQ(errorOf([&] { camera.capturePhotoAsRawPNG(); }).code(), winrt::result::changedState);
}

TEST_F(ConnectedCameraTest, ACaptureThatCompletesWithinItsLimitIsANormalResult) {
    useCamera(R"({"capture": {"delayMs": 200}})");
    ConnectedCamera camera(found());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(camera.capturePhotoAsRawPNG().empty());
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(200));
}

TEST_F(ConnectedCameraTest, ACaptureThatEndsAfterItsWaiterGaveUpDoesNoHarm) {
    useCamera(R"({"capture": {"delayMs": 300}})");
    ConnectedCamera camera(found());
    shortenTimeLimits(1000);
    EXPECT_EQ(errorOf([&] { camera.capturePhotoAsRawPNG(); }).code(), winrt::result::changedState);
    EXPECT_TRUE(
        journal().waitFor([](const auto& all) { return all.back().call == captureCall && all.back().hasEnded(); }));
    shortenTimeLimits(1);
    EXPECT_FALSE(camera.capturePhotoAsRawPNG().empty());
}

TEST_F(ConnectedCameraTest, WaitForCompletionIsTrueForAnActionThatHasEndedWhateverItsOutcome) {
    const Platform::AsyncOperationSource<void> completed;
    completed.complete();
    EXPECT_TRUE(waitForCompletion(completed.operation(), milliseconds(0)));
    const Platform::AsyncOperationSource<void> failed;
    failed.fail({-7, u"It broke."});
    EXPECT_TRUE(waitForCompletion(failed.operation(), milliseconds(0)));
    EXPECT_EQ(clock().deadlines(), (std::vector{milliseconds(0), milliseconds(0)}));
}

TEST_F(ConnectedCameraTest, WaitForCompletionIsFalseWhenTheTimeHasPassed) {
    const Platform::AsyncOperationSource<void> never;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(waitForCompletion(never.operation(), milliseconds(30)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
}

TEST_F(ConnectedCameraTest, WaitForCompletionIsTrueAsSoonAsTheActionEndsElsewhere) {
    const Platform::AsyncOperationSource<void> source;
    std::jthread platform([&] { source.complete(); });
    EXPECT_TRUE(waitForCompletion(source.operation(), milliseconds(60000)));
}

TEST_F(ConnectedCameraTest, WaitForCompletionRaisesWhereTheHandlerCannotBeRegistered) {
    const Platform::AsyncOperationSource<void> source;
    source.operation().Completed([](const auto&, auto) {});
    EXPECT_EQ(errorOf([&] { waitForCompletion(source.operation(), milliseconds(0)); }).code(),
              winrt::result::handlerTaken);
}

/// Opens a camera with that fault and lets it go: as an object of its own, or shared, since the destructor
/// may become part of its owner.
void letGoOfCamera(const std::string& operation, bool isShared) {
    std::optional<ScenarioFile> file("{" + oneCamera(withFaults("{}", fault(operation))) + "}");
    Platform::setCameraPlatformFactory(
        [path = file->path()] { return Platform::Simulated::createSimulatedPlatform(path); });
    FoundCamera found;
    found.description.uid = "D";
    auto shared = isShared ? std::make_shared<ConnectedCamera>(found) : nullptr;
    auto own = isShared ? nullptr : std::make_unique<ConnectedCamera>(found);
    file.reset(); // the end of the process would leave its folder behind
    shared.reset();
    own.reset();
}

class ConnectedCameraDeathTest : public testing::TestWithParam<const char*> {};

TEST_P(ConnectedCameraDeathTest, ACameraThatDoesNotLetGoEndsTheProcessAndNamesTheCause) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* const named = "after throwing an instance of 'winrt::hresult_error'";
    EXPECT_EXIT(letGoOfCamera(GetParam(), false), testing::KilledBySignal(SIGABRT), named);
    EXPECT_EXIT(letGoOfCamera(GetParam(), true), testing::KilledBySignal(SIGABRT), named);
}

INSTANTIATE_TEST_SUITE_P(EachStep, ConnectedCameraDeathTest,
                         testing::Values("MediaFrameReader.StopAsync", "MediaCapture.Close"));

} // namespace
