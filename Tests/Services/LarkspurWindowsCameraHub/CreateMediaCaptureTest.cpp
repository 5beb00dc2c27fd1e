#include "Platform/Interface/AsyncWait.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Tests/Support/AlteredPlatform.h"
#include "Tests/Support/SimulatedHub.h"

#include <array>
#include <limits>
#include <stdexcept>
#include <thread>

namespace {

const std::string threeFormats =
    R"([{"width": 8, "height": 6}, {"width": 16, "height": 12}, {"width": 12, "height": 9}])";

/// A source of the device "cam" in JSON; `members` are more of its members, with a comma before each.
std::string source(const std::string& id, const std::string& members = "", const std::string& device = "cam") {
    return R"({"id": ")" + id + R"(", "device": {"id": ")" + device + R"("}, "profiles": )" + threeFormats + members +
           "}";
}

std::string group(const std::string& id, const std::string& sources) {
    return R"({"id": ")" + id + R"(", "sources": [)" + sources + "]}";
}

std::string groups(const std::string& list) { return R"("groups": [)" + list + "]"; }

FoundCamera camera(const std::string& uid, std::int32_t profileIndex) {
    FoundCamera found;
    found.description.uid = uid;
    found.profileIndex = profileIndex;
    return found;
}

class CreateMediaCaptureTest : public SimulatedHub {
protected:
    static Platform::MediaCapture open(std::int32_t profileIndex = 0, const std::string& uid = "cam") {
        return CameraHelper::CreateMediaCapture(camera(uid, profileIndex));
    }

    /// The code with which the first use of the capture fails.
    static winrt::hresult firstUseOf(const Platform::MediaCapture& capture) {
        return errorOf([&] { capture->VideoDeviceController(); }).code();
    }

    /// What SetFormatAsync was called with when the camera was opened in that format.
    std::vector<std::string> formatSet(std::int32_t profileIndex) {
        open(profileIndex);
        return callsOf("MediaFrameSource.SetFormatAsync");
    }

    using Lines = std::vector<std::string>;
};

TEST_F(CreateMediaCaptureTest, ACameraIsOpenedForVideoInTheFormatOfItsRecord) {
    useScenario(groups(group("G", source("S"))));
    const auto capture = open(2);
    EXPECT_EQ(calls(), (Lines{"MediaFrameSourceGroup.FindAllAsync", R"(MediaCapture.InitializeAsync ["G",1,2])",
                              "MediaCapture.FrameSources", R"(MediaFrameSource.SetFormatAsync ["S",2])"}));
    EXPECT_TRUE(lines().empty());
    EXPECT_NE(capture->VideoDeviceController(), nullptr);
}

TEST_F(CreateMediaCaptureTest, EachStepWaitsForTheEndOfTheOneBefore) {
    useScenario(groups(group("G", source("S"))));
    open();
    std::vector<std::string> order;
    for (const JournalLine& line : journal().lines())
        order.push_back((line.hasEnded() ? "end of " : "") + line.call);
    EXPECT_EQ(order,
              (Lines{"MediaFrameSourceGroup.FindAllAsync", "end of MediaFrameSourceGroup.FindAllAsync",
                     "MediaCapture.InitializeAsync", "end of MediaCapture.InitializeAsync", "MediaCapture.FrameSources",
                     "MediaFrameSource.SetFormatAsync", "end of MediaFrameSource.SetFormatAsync"}));
}

TEST_F(CreateMediaCaptureTest, OnlyAPhotoSourceTakesRealPhotos) {
    const std::array<std::pair<std::string, std::string>, 3> expected{
        {{"Photo", R"(["G",0,2])"}, {"VideoPreview", R"(["G",1,2])"}, {"VideoRecord", R"(["G",1,2])"}}};
    for (const auto& [streamType, settings] : expected) {
        useScenario(groups(group("G", source("S", R"(, "streamType": ")" + streamType + "\""))));
        open();
        EXPECT_EQ(callsOf("MediaCapture.InitializeAsync"), Lines{settings}) << streamType;
    }
}

TEST_F(CreateMediaCaptureTest, AnUnknownCameraIsAnUninitialisedCaptureWithoutALogLine) {
    useScenario(groups(group("G", source("S"))));
    const auto capture = open(0, "other");
    ASSERT_NE(capture, nullptr);
    EXPECT_EQ(calls(), Lines{"MediaFrameSourceGroup.FindAllAsync"});
    EXPECT_TRUE(log().records().empty());
    errorOf([&] { capture->VideoDeviceController(); });
    Platform::MediaCaptureInitializationSettings settings;
    settings.SourceGroup = Platform::blockingWait(Platform::cameraPlatform()->FindAllAsync()).GetAt(0);
    Platform::blockingWait(capture->InitializeAsync(settings)); // as only a capture that is new lets itself be
    EXPECT_NE(capture->VideoDeviceController(), nullptr);
}

TEST_F(CreateMediaCaptureTest, TheUidIsComparedByteForByte) {
    useScenario(
        groups(group("G", source("S", "", "CAM") + ", " + source("T", "", "cam ") + ", " + source("U", "", "ca"))));
    open();
    EXPECT_EQ(calls(), Lines{"MediaFrameSourceGroup.FindAllAsync"});
}

TEST_F(CreateMediaCaptureTest, TheUidIsTheDevicesIdInUtf8) {
    useScenario(groups(group("G", source("S", "", "Gerät 📷"))));
    open(1, "Gerät 📷");
    EXPECT_EQ(callsOf("MediaFrameSource.SetFormatAsync"), Lines{R"(["S",1])"});
}

TEST_F(CreateMediaCaptureTest, TheFirstSourceOfTheDeviceIsTakenWhateverItIs) {
    useScenario(groups(
        group("F", source("X", "", "other")) + ", " +
        group("G", source("Y", "", "other") + ", " + source("I", R"(, "kind": "Infrared")") + ", " + source("S")) +
        ", " + group("H", source("T"))));
    EXPECT_EQ(formatSet(1), Lines{R"(["I",1])"});
    EXPECT_EQ(callsOf("MediaCapture.InitializeAsync"), Lines{R"(["G",1,2])"});
}

TEST_F(CreateMediaCaptureTest, TheProfileIndexIsAPositionAmongTheFormatsUnchanged) {
    useScenario(
        groups(group("G", source("S", R"(, "formats": [{"width": 640, "height": 480}, {"width": 8, "height": 6}])"))));
    EXPECT_EQ(formatSet(1), Lines{R"(["S",1])"});
    EXPECT_TRUE(lines().empty());
}

TEST_F(CreateMediaCaptureTest, AProfileIndexThatIsNoPositionIsReplacedByTheBestProfilesIndex) {
    for (const std::int32_t index :
         {-1, 3, 4, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        useScenario(groups(group("G", source("S"))));
        log().clear();
        EXPECT_EQ(formatSet(index), Lines{R"(["S",1])"}) << index;
        EXPECT_EQ(lines(), (Lines{"DEBUG    Best Format:", "DEBUG NV12: 16x12 @ 30.0 fps"})) << index;
    }
}

TEST_F(CreateMediaCaptureTest, TheBestProfilesIndexIsUsedAmongFormatsThatAreOthers) {
    useScenario(
        groups(group("G", source("S", R"(, "formats": [{"width": 99, "height": 99}, {"width": 1, "height": 1}])"))));
    EXPECT_EQ(formatSet(2), Lines{R"(["S",1])"});
}

TEST_F(CreateMediaCaptureTest, ABestProfileBeyondTheFormatsIsAFailure) {
    useScenario(groups(group("G", source("S", R"(, "formats": [{"width": 16, "height": 12}])"))));
    const auto capture = open(-1);
    EXPECT_EQ(linesOf("ERROR"), Lines{"The list has no element at that position. -2147483637"});
    EXPECT_EQ(firstUseOf(capture), winrt::result::closed);
}

TEST_F(CreateMediaCaptureTest, ASourceThatDoesNotDescribeItsProfilesOpensByIndexAlone) {
    useScenario(groups(group("G", source("S", R"(, "sourceInfo2": false)"))));
    EXPECT_EQ(formatSet(2), Lines{R"(["S",2])"});
    const auto capture = open(-1);
    EXPECT_EQ(linesOf("ERROR").size(), 1u);
    EXPECT_EQ(firstUseOf(capture), winrt::result::closed);
}

TEST_F(CreateMediaCaptureTest, AllGroupsAreLookedThroughEachTime) {
    useScenario(groups(group("G", source("S"))));
    open();
    open();
    EXPECT_EQ(callsOf("MediaFrameSourceGroup.FindAllAsync").size(), 2u);
}

TEST_F(CreateMediaCaptureTest, AFailureOfAnyStepIsLoggedAndTheCaptureClosed) {
    for (const std::string operation :
         {"MediaCapture.InitializeAsync", "MediaCapture.FrameSources", "MediaFrameSource.SetFormatAsync"}) {
        useScenario(groups(group("G", source("S"))) + R"(, "cameras": {"cam": {"faults": {")" + operation +
                    R"(": {"message": "Gerät lost.", "code": -2147024891}}}})");
        log().clear();
        const auto capture = open();
        ASSERT_NE(capture, nullptr);
        EXPECT_EQ(lines(), Lines{"ERROR Gerät lost. -2147024891"}) << operation;
        EXPECT_EQ(calls().back(), "MediaCapture.Close") << operation;
        EXPECT_EQ(callsOf("MediaCapture.Close").size(), 1u) << operation;
        EXPECT_EQ(firstUseOf(capture), winrt::result::closed) << operation;
    }
}

TEST_F(CreateMediaCaptureTest, AfterAFailureTheCaptureIsClosedBeforeAnythingIsLogged) {
    useScenario(groups(group("G", source("S"))) + R"(, "cameras": {"cam": {"faults": {
        "MediaFrameSource.SetFormatAsync": {"message": "Opening", "code": -7},
        "MediaCapture.Close": {"message": "Closing", "code": -8}}}})");
    EXPECT_EQ(errorOf([] { open(); }).code(), -8) << "nothing guards the closing";
    EXPECT_EQ(calls().back(), "MediaCapture.Close");
    EXPECT_TRUE(lines().empty()) << "the closing comes first";
}

TEST_F(CreateMediaCaptureTest, AFailedEnumerationOfTheGroupsIsLoggedAndTheCaptureClosed) {
    useScenario(groups(group("G", source("S"))) +
                R"(, "faults": {"MediaFrameSourceGroup.FindAllAsync": {"message": "", "code": 7}})");
    const auto capture = open();
    EXPECT_EQ(lines(), Lines{"ERROR  7"});
    EXPECT_EQ(calls(), (Lines{"MediaFrameSourceGroup.FindAllAsync", "MediaCapture.Close"}));
    EXPECT_EQ(firstUseOf(capture), winrt::result::closed);
}

/// A source info whose device cannot be read.
class UnreadableSource final : public Platform::IMediaFrameSourceInfo {
public:
    std::u16string Id() const override { return u"S"; }
    Platform::MediaStreamType MediaStreamType() const override { return {}; }
    Platform::MediaFrameSourceKind SourceKind() const override { return {}; }
    Platform::DeviceInformation DeviceInformation() const override {
        throw winrt::hresult_error(winrt::result::accessDenied, u"unreadable");
    }
    Platform::MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const override { return nullptr; }
};

class UnreadableGroup final : public Platform::IMediaFrameSourceGroup {
public:
    std::u16string Id() const override { return u"G"; }
    std::u16string DisplayName() const override { return {}; }
    Platform::VectorView<Platform::MediaFrameSourceInfo> SourceInfos() const override {
        return {std::make_shared<UnreadableSource>()};
    }
};

TEST_F(CreateMediaCaptureTest, ADeviceThatCannotBeReadIsAFailure) {
    AlteredPlatform::install()->groups = [] { return AlteredPlatform::Groups{std::make_shared<UnreadableGroup>()}; };
    const auto capture = open();
    EXPECT_EQ(lines(), Lines{"ERROR unreadable -2147024891"});
    EXPECT_EQ(firstUseOf(capture), winrt::result::closed);
}

TEST_F(CreateMediaCaptureTest, AnotherExceptionIsNotCaught) {
    AlteredPlatform::install()->groups = []() -> AlteredPlatform::Groups {
        throw std::runtime_error("no platform error");
    };
    EXPECT_THROW(open(), std::runtime_error);
}

TEST_F(CreateMediaCaptureTest, TwoCamerasMayBeOpenedAtOnce) {
    const auto slow = [](const std::string& id) {
        return "\"" + id + R"(": {"faults": {"MediaCapture.InitializeAsync": {"fails": false, "delayMs": 50}}})";
    };
    useScenario(groups(group("G", source("S")) + ", " + group("H", source("T", "", "dog"))) + R"(, "cameras": {)" +
                slow("cam") + ", " + slow("dog") + "}");
    Platform::MediaCapture other;
    std::thread thread([&] { other = open(0, "dog"); });
    const auto capture = open();
    thread.join();
    EXPECT_NE(capture->VideoDeviceController(), nullptr);
    EXPECT_NE(other->VideoDeviceController(), nullptr);
}

} // namespace
