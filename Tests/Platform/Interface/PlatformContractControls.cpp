#include "Tests/Platform/Interface/PlatformContract.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace Platform;

namespace {

struct OlderControl {
    std::string name;
    MediaDeviceControl control;
    MediaDeviceControlCapabilities capabilities;
};

/// Those of the older generation that fit; the test is to skip where there are none.
std::vector<OlderControl> olderControls(const VideoDeviceController& controller,
                                        const std::function<bool(const MediaDeviceControlCapabilities&)>& fits) {
    std::vector<OlderControl> found;
    for (const auto& [name, control] :
         {std::pair("Exposure", controller->Exposure()), std::pair("Focus", controller->Focus()),
          std::pair("WhiteBalance", controller->WhiteBalance()), std::pair("Brightness", controller->Brightness()),
          std::pair("Contrast", controller->Contrast())})
        if (fits(control->Capabilities()))
            found.push_back({name, control, control->Capabilities()});
    return found;
}

bool canBeSet(const MediaDeviceControlCapabilities& capabilities) {
    return capabilities.Supported && capabilities.Step > 0;
}

bool isSupported(const MediaDeviceControlCapabilities& capabilities) { return capabilities.Supported; }

bool isAbsent(const MediaDeviceControlCapabilities& capabilities) { return !capabilities.Supported; }

bool hasAutomatic(const MediaDeviceControlCapabilities& capabilities) {
    return capabilities.Supported && capabilities.AutoModeSupported;
}

bool hasNoAutomatic(const MediaDeviceControlCapabilities& capabilities) {
    return capabilities.Supported && !capabilities.AutoModeSupported;
}

} // namespace

TEST_P(PlatformContract, NoControlIsNull) {
    const MediaCapture capture = open();
    const VideoDeviceController controller = capture->VideoDeviceController();
    EXPECT_NE(controller->Exposure(), nullptr);
    EXPECT_NE(controller->Focus(), nullptr);
    EXPECT_NE(controller->WhiteBalance(), nullptr);
    EXPECT_NE(controller->Brightness(), nullptr);
    EXPECT_NE(controller->Contrast(), nullptr);
    EXPECT_NE(controller->ExposureControl(), nullptr);
    EXPECT_NE(controller->FocusControl(), nullptr);
    EXPECT_NE(controller->WhiteBalanceControl(), nullptr);
    EXPECT_NE(controller->IsoSpeedControl(), nullptr);
    EXPECT_NE(controller->ExposureCompensationControl(), nullptr);
}

TEST_P(PlatformContract, BothEndsOfARangeCanBeSetAndReadBack) {
    const MediaCapture capture = open();
    const auto controls = olderControls(capture->VideoDeviceController(), canBeSet);
    if (controls.empty())
        GTEST_SKIP() << "The camera has no older control that can be set.";
    for (const auto& [name, control, capabilities] : controls) {
        EXPECT_TRUE(control->TrySetAuto(false)) << name;
        for (const double end : {capabilities.Min, capabilities.Max}) {
            double value = 0.0;
            EXPECT_TRUE(control->TrySetValue(end)) << name;
            EXPECT_TRUE(control->TryGetValue(value)) << name;
            EXPECT_NEAR(value, end, capabilities.Step / 2) << name;
        }
    }
}

TEST_P(PlatformContract, NotANumberIsRefused) {
    const MediaCapture capture = open();
    const auto controls = olderControls(capture->VideoDeviceController(), isSupported);
    if (controls.empty())
        GTEST_SKIP() << "The camera has no older control.";
    for (const auto& [name, control, capabilities] : controls)
        EXPECT_FALSE(control->TrySetValue(std::numeric_limits<double>::quiet_NaN())) << name;
}

TEST_P(PlatformContract, AnAutomaticIsTurnedOnAndOffAndReadBack) {
    const MediaCapture capture = open();
    const auto controls = olderControls(capture->VideoDeviceController(), hasAutomatic);
    if (controls.empty())
        GTEST_SKIP() << "The camera has no older control with an automatic.";
    for (const auto& [name, control, capabilities] : controls)
        for (const bool wanted : {true, false}) {
            bool on = !wanted;
            EXPECT_TRUE(control->TrySetAuto(wanted)) << name;
            EXPECT_TRUE(control->TryGetAuto(on)) << name;
            EXPECT_EQ(on, wanted) << name;
        }
}

TEST_P(PlatformContract, WhereThereIsNoAutomaticTurningItOffSucceedsAndOnIsRefused) {
    const MediaCapture capture = open();
    const auto controls = olderControls(capture->VideoDeviceController(), hasNoAutomatic);
    if (controls.empty())
        GTEST_SKIP() << "The camera has no older control without an automatic.";
    for (const auto& [name, control, capabilities] : controls) {
        EXPECT_TRUE(control->TrySetAuto(false)) << name;
        EXPECT_FALSE(control->TrySetAuto(true)) << name;
    }
}

TEST_P(PlatformContract, AnOlderControlThatTheCameraLacksRefusesAndLeavesTheCallersValues) {
    const MediaCapture capture = open();
    const auto controls = olderControls(capture->VideoDeviceController(), isAbsent);
    if (controls.empty())
        GTEST_SKIP() << "The camera has all older controls.";
    for (const auto& [name, control, capabilities] : controls) {
        double value = 42.0;
        bool on = true;
        EXPECT_FALSE(control->TrySetValue(0)) << name;
        EXPECT_FALSE(control->TrySetAuto(true)) << name;
        EXPECT_FALSE(control->TryGetValue(value)) << name;
        EXPECT_FALSE(control->TryGetAuto(on)) << name;
        EXPECT_EQ(value, 42.0) << name;
        EXPECT_TRUE(on) << name;
    }
}

TEST_P(PlatformContract, ASettingIsTheCamerasAndNotTheCaptures) {
    const MediaCapture first = open();
    const MediaCapture second = open();
    const auto controls = olderControls(first->VideoDeviceController(), canBeSet);
    if (controls.empty())
        GTEST_SKIP() << "The camera has no older control that can be set.";
    for (const auto& [name, control, capabilities] : controls) {
        EXPECT_TRUE(control->TrySetAuto(false)) << name;
        EXPECT_TRUE(control->TrySetValue(capabilities.Max)) << name;
    }
    first->Close();
    for (const auto& [name, control, capabilities] : olderControls(second->VideoDeviceController(), canBeSet)) {
        double value = 0.0;
        EXPECT_TRUE(control->TryGetValue(value)) << name;
        EXPECT_NEAR(value, capabilities.Max, capabilities.Step / 2) << name;
    }
}

TEST_P(PlatformContract, SettingANewerControlThatTheCameraLacksFails) {
    const MediaCapture capture = open();
    const VideoDeviceController controller = capture->VideoDeviceController();
    std::vector<CaptureUse> uses;
    if (const auto control = controller->ExposureControl(); !control->Supported()) {
        uses.push_back({"SetAutoAsync", [=] { blockingWait(control->SetAutoAsync(true)); }});
        uses.push_back({"SetValueAsync", [=] { blockingWait(control->SetValueAsync(TimeSpan(10'000))); }});
    }
    if (const auto control = controller->FocusControl(); !control->Supported())
        uses.push_back({"Focus", [=] { blockingWait(control->SetPresetAsync(FocusPreset::Auto)); }});
    if (const auto control = controller->WhiteBalanceControl(); !control->Supported())
        uses.push_back({"WhiteBalance", [=] { blockingWait(control->SetPresetAsync(ColorTemperaturePreset::Auto)); }});
    if (const auto control = controller->IsoSpeedControl(); !control->Supported())
        uses.push_back({"Iso", [=] { blockingWait(control->SetValueAsync(100)); }});
    if (uses.empty())
        GTEST_SKIP() << "The camera has all newer controls.";
    for (const CaptureUse& use : uses)
        EXPECT_NE(codeRaisedBy(use.call), winrt::result::ok) << use.operation;
}

TEST_P(PlatformContract, TheNewerExposureControlKeepsItsRange) {
    const MediaCapture capture = open();
    const auto control = capture->VideoDeviceController()->ExposureControl();
    if (!control->Supported())
        GTEST_SKIP() << "The camera has no newer exposure control.";
    for (const bool on : {true, false}) {
        blockingWait(control->SetAutoAsync(on));
        EXPECT_EQ(control->Auto(), on);
    }
    blockingWait(control->SetValueAsync(control->Min() - control->Step()));
    EXPECT_EQ(control->Value(), control->Min());
    blockingWait(control->SetValueAsync(control->Max() + control->Step()));
    EXPECT_EQ(control->Value(), control->Max());
}

TEST_P(PlatformContract, APresetOfFocusAndWhiteBalanceIsReadBack) {
    const MediaCapture capture = open();
    const auto focus = capture->VideoDeviceController()->FocusControl();
    const auto whiteBalance = capture->VideoDeviceController()->WhiteBalanceControl();
    if (!focus->Supported() && !whiteBalance->Supported())
        GTEST_SKIP() << "The camera has neither of the two newer controls.";
    if (focus->Supported()) {
        blockingWait(focus->SetPresetAsync(FocusPreset::Auto));
        EXPECT_EQ(focus->Preset(), FocusPreset::Auto);
    }
    if (whiteBalance->Supported()) {
        blockingWait(whiteBalance->SetPresetAsync(ColorTemperaturePreset::Auto));
        EXPECT_EQ(whiteBalance->Preset(), ColorTemperaturePreset::Auto);
    }
}

TEST_P(PlatformContract, SettingTheIsoSpeedTurnsItsAutomaticOffAndKeepsTheRange) {
    const MediaCapture capture = open();
    const auto control = capture->VideoDeviceController()->IsoSpeedControl();
    if (!control->Supported())
        GTEST_SKIP() << "The camera has no ISO speed.";
    blockingWait(control->SetValueAsync(control->Max() + 1));
    EXPECT_EQ(control->Value(), control->Max());
    EXPECT_FALSE(control->Auto());
    blockingWait(control->SetValueAsync(control->Min()));
    EXPECT_EQ(control->Value(), control->Min());
}
