#include "Platform/Interface/AsyncWait.h"
#include "Services/LarkspurWindowsCameraHub/AutoControls.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <utility>

namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

/// One automatic of a camera switched, and what is then logged and asked of the platform.
struct Switch {
    const char* name;
    void (*function)(Platform::MediaCapture, bool);
    const char* camera;
    bool on;
    const char* logged;
    const char* called; ///< the last call, as the journal has it; none for a control that is left alone
};

class AutoControlsTest : public OneCamera, public testing::WithParamInterface<Switch> {};

TEST_P(AutoControlsTest, PrefersTheNewerControlAndLogsTheOutcome) {
    const Switch& expected = GetParam();
    useScenario(oneCamera(expected.camera));
    const auto capture = CameraHelper::CreateMediaCapture(found());
    const std::size_t opened = journal().calls().size();
    expected.function(capture, expected.on);
    EXPECT_EQ(deviceLines(), (Texts{expected.logged}));
    const auto all = calls();
    const Texts switches(all.begin() + static_cast<std::ptrdiff_t>(opened), all.end());
    Texts setters;
    for (const std::string& call : switches)
        if (call.find(".Set") != std::string::npos || call.find(".TrySet") != std::string::npos)
            setters.push_back(call);
    EXPECT_EQ(setters, *expected.called ? Texts{expected.called} : Texts{});
}

constexpr const char* newerExposure = R"({"exposureControl": {"supported": true}, "exposure": {"supported": true}})";
constexpr const char* olderAuto = R"({"exposure": {"supported": true}, "focus": {"supported": true},
                                      "whiteBalance": {"supported": true}})";
constexpr const char* refusing = R"({"exposure": {"supported": true, "refuse": ["TrySetAuto"]},
                                     "focus": {"supported": true, "refuse": ["TrySetAuto"]},
                                     "whiteBalance": {"supported": true, "refuse": ["TrySetAuto"]}})";
constexpr const char* withoutAuto = R"({"exposure": {"supported": true, "autoModeSupported": false},
                                        "focus": {"supported": true, "autoModeSupported": false},
                                        "whiteBalance": {"supported": true, "autoModeSupported": false}})";
constexpr const char* newerFocus =
    R"({"focusControl": {"supported": true, "preset": 1}, "focus": {"supported": true}})";
constexpr const char* newerBalance =
    R"({"whiteBalanceControl": {"supported": true, "preset": 1}, "whiteBalance": {"supported": true}})";
constexpr const char* trySetOn = "MediaDeviceControl.TrySetAuto [true]";
constexpr const char* trySetOff = "MediaDeviceControl.TrySetAuto [false]";

std::string nameOfSwitch(const testing::TestParamInfo<Switch>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Exposure, AutoControlsTest,
    testing::Values(
        Switch{"NewerOn", autoExposure, newerExposure, true, "INFO   Auto ExposureControl:  on ",
               "ExposureControl.SetAutoAsync [true]"},
        Switch{"NewerOff", autoExposure, newerExposure, false, "INFO   Auto ExposureControl:  off ",
               "ExposureControl.SetAutoAsync [false]"},
        Switch{"OlderOn", autoExposure, olderAuto, true, "INFO   Auto Exposure:  on ", trySetOn},
        Switch{"OlderOff", autoExposure, olderAuto, false, "INFO   Auto Exposure:  off ", trySetOff},
        Switch{"RefusedOn", autoExposure, refusing, true, "ERROR   Can't set auto exposure:  on ", trySetOn},
        Switch{"RefusedOff", autoExposure, refusing, false, "ERROR   Can't set auto exposure:  off ", trySetOff},
        // whether it has an automatic mode is not asked: it is the device that says no
        Switch{"WithoutAutoModeOn", autoExposure, withoutAuto, true, "ERROR   Can't set auto exposure:  on ", trySetOn},
        Switch{"WithoutAutoModeOff", autoExposure, withoutAuto, false, "INFO   Auto Exposure:  off ", trySetOff},
        Switch{"NoneOn", autoExposure, "{}", true, "WARN   No exposure control supported", ""},
        Switch{"NoneOff", autoExposure, "{}", false, "WARN   No exposure control supported", ""}),
    nameOfSwitch);

INSTANTIATE_TEST_SUITE_P(
    Focus, AutoControlsTest,
    testing::Values(
        Switch{"NewerOn", autoFocus, newerFocus, true, "INFO   Auto Focus:  on ", "FocusControl.SetPresetAsync [0]"},
        // the same preset for off
        Switch{"NewerOff", autoFocus, newerFocus, false, "INFO   Auto Focus:  off ", "FocusControl.SetPresetAsync [0]"},
        Switch{"OlderOn", autoFocus, olderAuto, true, "INFO   Auto Focus:  on ", trySetOn},
        Switch{"OlderOff", autoFocus, olderAuto, false, "INFO   Auto Focus:  off ", trySetOff},
        Switch{"RefusedOn", autoFocus, refusing, true, "ERROR   Can't set auto focus:  on ", trySetOn},
        Switch{"RefusedOff", autoFocus, refusing, false, "ERROR   Can't set auto focus:  off ", trySetOff},
        Switch{"WithoutAutoModeOn", autoFocus, withoutAuto, true, "INFO   Auto Focus not supported", ""},
        Switch{"WithoutAutoModeOff", autoFocus, withoutAuto, false, "INFO   Auto Focus is off", ""},
        Switch{"NoneOn", autoFocus, "{}", true, "INFO   No focus control supported", ""},
        Switch{"NoneOff", autoFocus, "{}", false, "INFO   No focus control supported", ""}),
    nameOfSwitch);

INSTANTIATE_TEST_SUITE_P(
    WhiteBalance, AutoControlsTest,
    testing::Values(
        Switch{"NewerOn", autoWhiteBalance, newerBalance, true, "INFO   Auto WB:  on ",
               "WhiteBalanceControl.SetPresetAsync [0]"},
        Switch{"NewerOff", autoWhiteBalance, newerBalance, false, "INFO   Auto WB:  off ",
               "WhiteBalanceControl.SetPresetAsync [0]"},
        Switch{"OlderOn", autoWhiteBalance, olderAuto, true, "INFO   Auto WB:  on ", trySetOn},
        Switch{"OlderOff", autoWhiteBalance, olderAuto, false, "INFO   Auto WB:  off ", trySetOff},
        Switch{"RefusedOn", autoWhiteBalance, refusing, true, "ERROR   Can't set auto WB:  on ", trySetOn},
        Switch{"RefusedOff", autoWhiteBalance, refusing, false, "ERROR   Can't set auto WB:  off ", trySetOff},
        Switch{"WithoutAutoModeOn", autoWhiteBalance, withoutAuto, true, "INFO   Auto White Balance not supported", ""},
        Switch{"WithoutAutoModeOff", autoWhiteBalance, withoutAuto, false, "INFO   Auto White Balance is off", ""},
        Switch{"NoneOn", autoWhiteBalance, "{}", true, "INFO   No white balance supported", ""},
        Switch{"NoneOff", autoWhiteBalance, "{}", false, "INFO   No white balance supported", ""}),
    nameOfSwitch);

class ConvergenceTest : public OneCamera {
protected:
    /// The camera opened, the log and the clock empty.
    ConnectedCamera& open(const std::string& camera) {
        useScenario(oneCamera(camera));
        _camera = std::make_unique<ConnectedCamera>(found());
        forget();
        return *_camera;
    }

    void close() { _camera.reset(); }

private:
    std::unique_ptr<ConnectedCamera> _camera;
};

TEST_F(ConvergenceTest, ACameraWithoutAnyControlTakesItsTimeAndLogsEachPass) {
    open("{}").enableAndConvergeAuto(true, true, true);
    EXPECT_EQ(
        deviceLines(),
        (Texts{"DEBUG Turning on a preview stream to converge: [exposure] [focus] [WB] , camera name: Cam",
               "DEBUG Turn auto settings on or off..", "WARN   No exposure control supported",
               "INFO   No focus control supported", "INFO   No white balance supported", "DEBUG Converging..",
               "DEBUG Done... turn off auto settings for future captures..", "WARN   No exposure control supported",
               "INFO   No focus control supported", "INFO   No white balance supported"}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
}

TEST_F(ConvergenceTest, TheOlderControlsAreSwitchedOnThenOffInTheSameOrder) {
    open(olderAuto).enableAndConvergeAuto(true, true, true);
    Texts switches;
    for (const JournalLine& line : journal().linesOf("MediaDeviceControl.TrySetAuto"))
        switches.push_back(line.control + (line.json["args"][0].asBool() ? " on" : " off"));
    EXPECT_EQ(switches,
              (Texts{"Exposure on", "Focus on", "WhiteBalance on", "Exposure off", "Focus off", "WhiteBalance off"}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
}

TEST_F(ConvergenceTest, TheNewerControlsGetTheSamePresetInBothPasses) {
    open(R"({"exposureControl": {"supported": true}, "focusControl": {"supported": true},
             "whiteBalanceControl": {"supported": true}})")
        .enableAndConvergeAuto(true, true, true);
    EXPECT_EQ(news(),
              (Texts{"D: VideoDeviceController", "D: ExposureControl.SetAutoAsync [true]",
                     "D: ExposureControl.SetAutoAsync [true] ended", "D: VideoDeviceController",
                     "D: FocusControl.SetPresetAsync [0]", "D: FocusControl.SetPresetAsync [0] ended",
                     "D: VideoDeviceController", "D: WhiteBalanceControl.SetPresetAsync [0]",
                     "D: WhiteBalanceControl.SetPresetAsync [0] ended", "D: VideoDeviceController",
                     "D: ExposureControl.SetAutoAsync [false]", "D: ExposureControl.SetAutoAsync [false] ended",
                     "D: VideoDeviceController", "D: FocusControl.SetPresetAsync [0]",
                     "D: FocusControl.SetPresetAsync [0] ended", "D: VideoDeviceController",
                     "D: WhiteBalanceControl.SetPresetAsync [0]", "D: WhiteBalanceControl.SetPresetAsync [0] ended"}));
}

TEST_F(ConvergenceTest, NoneOfTheThreeDoesNothingAtAll) {
    open(olderAuto).enableAndConvergeAuto(false, false, false);
    EXPECT_TRUE(deviceLines().empty());
    EXPECT_TRUE(news().empty());
    EXPECT_TRUE(clock().calls().empty());
}

TEST_F(ConvergenceTest, TheOnesThatAreNotChosenAreSwitchedOffOnceAtOnce) {
    open(olderAuto).enableAndConvergeAuto(true, false, false);
    EXPECT_EQ(deviceLines(),
              (Texts{"DEBUG Turning on a preview stream to converge: [exposure] , camera name: Cam",
                     "DEBUG Turn auto settings on or off..", "INFO   Auto Exposure:  on ", "INFO   Auto Focus:  off ",
                     "INFO   Auto WB:  off ", "DEBUG Converging..",
                     "DEBUG Done... turn off auto settings for future captures..", "INFO   Auto Exposure:  off "}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
}

TEST_F(ConvergenceTest, FocusAndWhiteBalanceAloneAreNamedAlone) {
    ConnectedCamera& camera = open(olderAuto);
    camera.enableAndConvergeAuto(false, true, false);
    EXPECT_EQ(deviceLines().front(), "DEBUG Turning on a preview stream to converge: [focus] , camera name: Cam");
    EXPECT_EQ(deviceLines().back(), "INFO   Auto Focus:  off ");
    log().clear();
    camera.enableAndConvergeAuto(false, false, true);
    EXPECT_EQ(deviceLines().front(), "DEBUG Turning on a preview stream to converge: [WB] , camera name: Cam");
    EXPECT_EQ(deviceLines().back(), "INFO   Auto WB:  off ");
}

TEST_F(ConvergenceTest, ControlsThatRefuseDoNotKeepTheCameraFromOpening) {
    open(refusing).enableAndConvergeAuto(true, true, true);
    EXPECT_EQ(timesCalled("MediaDeviceControl.TrySetAuto"), 6u);
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(2000)}));
}

TEST_F(ConvergenceTest, TheStreamIsTheOneThatRunsAlready) {
    open(olderAuto).enableAndConvergeAuto(true, true, true);
    EXPECT_EQ(timesCalled("MediaFrameReader.StartAsync"), 1u);
    EXPECT_EQ(timesCalled("MediaCapture.CreateFrameReaderAsync"), 1u);
}

TEST_F(ConvergenceTest, TheExposureRequestedLastIsNotForgotten) {
    ConnectedCamera& camera = open(olderExposure());
    camera.setExposureAsExponent(-4, milliseconds(0));
    camera.enableAndConvergeAuto(true, true, true);
    log().clear();
    EXPECT_EQ(camera.setExposureAsExponent(-4, milliseconds(0)), std::chrono::microseconds(62500));
    EXPECT_EQ(deviceLines(), (Texts{"INFO Exposure has not changed since last request., camera name: Cam"}));
}

/// A call of the convergence that fails, and how many calls of its kind and sleeps there then were.
struct ConvergenceFault {
    const char* name;
    const char* operation;
    int after;
    std::size_t sleeps;
};

class ConvergenceFaultTest : public ConvergenceTest, public testing::WithParamInterface<ConvergenceFault> {};

TEST_P(ConvergenceFaultTest, LeavesTheConvergenceWithTheRestUndone) {
    const ConvergenceFault& step = GetParam();
    const std::string camera = R"({"exposureControl": {"supported": true}, "focusControl": {"supported": true},
                                   "whiteBalanceControl": {"supported": true}})";
    ConnectedCamera& connected =
        open(withFaults(camera, fault(step.operation, R"("after": )" + std::to_string(step.after))));
    EXPECT_EQ(errorOf([&] { connected.enableAndConvergeAuto(true, true, true); }).code(), -7);
    EXPECT_TRUE(journal().lines().back().hasError());
    EXPECT_EQ(journal().lines().back().call, step.operation);
    EXPECT_EQ(clock().sleeps().size(), step.sleeps);
    EXPECT_TRUE(linesOf("ERROR").empty());
    close();
    EXPECT_EQ(journalTexts().back(), "D: MediaCapture.Close");
}

INSTANTIATE_TEST_SUITE_P(EachCall, ConvergenceFaultTest,
                         testing::Values(ConvergenceFault{"ExposureOn", "ExposureControl.SetAutoAsync", 0, 0},
                                         ConvergenceFault{"FocusOn", "FocusControl.SetPresetAsync", 0, 0},
                                         ConvergenceFault{"WhiteBalanceOn", "WhiteBalanceControl.SetPresetAsync", 0, 0},
                                         ConvergenceFault{"ExposureOff", "ExposureControl.SetAutoAsync", 1, 1},
                                         ConvergenceFault{"FocusOff", "FocusControl.SetPresetAsync", 1, 1},
                                         ConvergenceFault{"WhiteBalanceOff", "WhiteBalanceControl.SetPresetAsync", 1,
                                                          1},
                                         ConvergenceFault{"Controller1", "VideoDeviceController", 0, 0},
                                         ConvergenceFault{"Controller2", "VideoDeviceController", 1, 0},
                                         ConvergenceFault{"Controller3", "VideoDeviceController", 2, 0},
                                         ConvergenceFault{"Controller4", "VideoDeviceController", 3, 1}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(ConvergenceTest, AnOlderControlThatCannotBeReadRaises) {
    ConnectedCamera& camera = open(withFaults(olderAuto, fault("MediaDeviceControl.Capabilities", R"("after": 1)")));
    EXPECT_EQ(errorOf([&] { camera.enableAndConvergeAuto(true, true, true); }).code(), -7);
    EXPECT_EQ(news().back(), "D: MediaDeviceControl.Capabilities Focus ! -7");
    EXPECT_TRUE(clock().sleeps().empty());
}

TEST_F(ConvergenceTest, ACameraThatIsGoneRaises) {
    ConnectedCamera& camera = open(olderAuto);
    unplug();
    EXPECT_LT(errorOf([&] { camera.enableAndConvergeAuto(true, true, true); }).code(), 0);
    EXPECT_TRUE(clock().sleeps().empty());
}

} // namespace
