#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <string>

using namespace Platform;

namespace {

class SimulatedControlsTest : public SimulatedFixture {
protected:
    VideoDeviceController controller(const std::string& camera) {
        start(cameraScenario(camera));
        _capture = open();
        return _capture->VideoDeviceController();
    }
    static double valueOf(const MediaDeviceControl& control) {
        double value = std::numeric_limits<double>::quiet_NaN();
        EXPECT_TRUE(control->TryGetValue(value));
        return value;
    }
    static bool autoOf(const MediaDeviceControl& control) {
        bool on = false;
        EXPECT_TRUE(control->TryGetAuto(on));
        return on;
    }

    MediaCapture _capture;
};

const char* const focus = R"({"focus": {"supported": true, "min": 0, "max": 10, "step": 4, "value": 3}})";

TEST_F(SimulatedControlsTest, CapabilitiesAreThoseOfTheFile) {
    const auto control = controller(
        R"({"contrast": {"supported": true, "min": -1.5, "max": 2, "step": 0.5, "autoModeSupported": false}})");
    const auto capabilities = control->Contrast()->Capabilities();
    EXPECT_TRUE(capabilities.Supported);
    EXPECT_FALSE(capabilities.AutoModeSupported);
    EXPECT_EQ(capabilities.Min, -1.5);
    EXPECT_EQ(capabilities.Max, 2);
    EXPECT_EQ(capabilities.Step, 0.5);
    EXPECT_FALSE(control->Brightness()->Capabilities().Supported);
}

TEST_F(SimulatedControlsTest, AControlThatIsMissingRefusesEverything) {
    const auto control = controller("{}")->Focus();
    double value = 7;
    bool on = true;
    EXPECT_FALSE(control->TrySetValue(1));
    EXPECT_FALSE(control->TryGetValue(value));
    EXPECT_FALSE(control->TrySetAuto(true));
    EXPECT_FALSE(control->TryGetAuto(on));
    EXPECT_EQ(value, 7);
}

TEST_F(SimulatedControlsTest, TheFirstValueStandsAsItIsInTheFile) { EXPECT_EQ(valueOf(controller(focus)->Focus()), 3); }

TEST_F(SimulatedControlsTest, AValueIsBroughtIntoTheRangeAndOnTheGrid) {
    const auto control = controller(focus)->Focus();
    const auto latched = [&](double value) {
        EXPECT_TRUE(control->TrySetValue(value));
        return valueOf(control);
    };
    EXPECT_EQ(latched(99), 8);
    EXPECT_EQ(latched(-99), 0);
    EXPECT_EQ(latched(2), 4);
    EXPECT_EQ(latched(5.9), 4);
}

TEST_F(SimulatedControlsTest, NotANumberIsRefused) {
    const auto control = controller(focus)->Focus();
    EXPECT_FALSE(control->TrySetValue(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(valueOf(control), 3);
}

TEST_F(SimulatedControlsTest, ALatchTakesThePlaceOfEveryValue) {
    const auto control =
        controller(R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "latch": -20.5}})");
    EXPECT_TRUE(control->Exposure()->TrySetValue(-4));
    EXPECT_EQ(valueOf(control->Exposure()), -20.5);
    EXPECT_FALSE(control->Exposure()->TrySetValue(std::nan("")));
}

TEST_F(SimulatedControlsTest, EachOperationCanBeRefusedByItself) {
    const auto control = controller(R"({
        "exposure": {"supported": true, "max": 9, "refuse": ["TrySetValue"]},
        "focus": {"supported": true, "max": 9, "refuse": ["TryGetValue"]},
        "whiteBalance": {"supported": true, "max": 9, "refuse": ["TrySetAuto"]},
        "brightness": {"supported": true, "max": 9, "refuse": ["TryGetAuto"]}})");
    const auto pattern = [](const MediaDeviceControl& older) {
        double value = 0;
        bool on = false;
        std::string text;
        text += older->TrySetValue(1) ? '1' : '0';
        text += older->TryGetValue(value) ? '1' : '0';
        text += older->TrySetAuto(false) ? '1' : '0';
        text += older->TryGetAuto(on) ? '1' : '0';
        return text;
    };
    EXPECT_EQ(pattern(control->Exposure()), "0111");
    EXPECT_EQ(pattern(control->Focus()), "1011");
    EXPECT_EQ(pattern(control->WhiteBalance()), "1101");
    EXPECT_EQ(pattern(control->Brightness()), "1110");
    EXPECT_EQ(valueOf(control->Exposure()), 0);
}

TEST_F(SimulatedControlsTest, AutomaticModeIsSwitched) {
    const auto control = controller(R"({"focus": {"supported": true, "auto": true}})")->Focus();
    EXPECT_TRUE(autoOf(control));
    EXPECT_TRUE(control->TrySetAuto(false));
    EXPECT_FALSE(autoOf(control));
    EXPECT_TRUE(control->TrySetAuto(true));
    EXPECT_TRUE(autoOf(control));
}

TEST_F(SimulatedControlsTest, AControlWithoutAutomaticModeRefusesToSwitchItOn) {
    const auto control = controller(R"({"focus": {"supported": true, "autoModeSupported": false}})")->Focus();
    EXPECT_FALSE(control->TrySetAuto(true));
    EXPECT_TRUE(control->TrySetAuto(false));
    EXPECT_FALSE(autoOf(control));
}

TEST_F(SimulatedControlsTest, CapturesOfOneCameraShareItsControls) {
    const auto first = controller(focus);
    const MediaCapture other = open();
    first->Focus()->TrySetValue(8);
    EXPECT_EQ(valueOf(other->VideoDeviceController()->Focus()), 8);
}

const char* const exposure = R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -2},
    "exposureControl": {"supported": true}, "capture": {"neutralExposure": -5.0}})";

TEST_F(SimulatedControlsTest, AutomaticExposureArrivesAtTheNeutralOneWithinASecond) {
    const auto control = controller(exposure)->Exposure();
    EXPECT_TRUE(control->TrySetAuto(true));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    bool isOver = false;
    while (valueOf(control) != -5.0 && !isOver) // a look that begins after a second finds it there
        isOver = std::chrono::steady_clock::now() > end;
    EXPECT_EQ(valueOf(control), -5.0);
    EXPECT_TRUE(control->TrySetAuto(false));
    EXPECT_EQ(valueOf(control), -5.0);
}

TEST_F(SimulatedControlsTest, AutomaticExposureMovesThereGradually) {
    const auto control = controller(exposure)->Exposure();
    double reached = -5.0;
    for (int attempt = 0; attempt < 100 && reached == -5.0; ++attempt) { // a busy machine may look too late
        control->TrySetValue(-2);
        control->TrySetAuto(true);
        EXPECT_TRUE(waitUntil([&] { return valueOf(control) < -2.2; }));
        control->TrySetAuto(false);
        reached = valueOf(control);
    }
    EXPECT_GT(reached, -5.0);
    EXPECT_EQ(valueOf(control), reached);
}

TEST_F(SimulatedControlsTest, AutomaticExposureOfTheNewerControlMovesTheSameExposure) {
    const auto control = controller(exposure);
    EXPECT_FALSE(control->ExposureControl()->Auto());
    blockingWait(control->ExposureControl()->SetAutoAsync(true));
    EXPECT_TRUE(control->ExposureControl()->Auto());
    EXPECT_TRUE(autoOf(control->Exposure()));
    EXPECT_TRUE(waitUntil([&] { return valueOf(control->Exposure()) == -5.0; }));
    blockingWait(control->ExposureControl()->SetAutoAsync(false));
    EXPECT_FALSE(autoOf(control->Exposure()));
    EXPECT_EQ(control->ExposureControl()->Value().count(), 313000); // 2^-5 s in ticks, on the grid of 1000
}

TEST_F(SimulatedControlsTest, TheNewerExposureControlIsSetInTicks) {
    const auto control = controller(exposure);
    const auto newer = control->ExposureControl();
    EXPECT_TRUE(newer->Supported());
    EXPECT_EQ(newer->Min().count(), 1000);
    EXPECT_EQ(newer->Max().count(), 10000000);
    EXPECT_EQ(newer->Step().count(), 1000);
    EXPECT_EQ(newer->Value().count(), 333333);
    blockingWait(newer->SetValueAsync(TimeSpan(2500500)));
    EXPECT_EQ(newer->Value().count(), 2501000);
    EXPECT_NEAR(valueOf(control->Exposure()), std::log2(0.2501), 1e-9);
    blockingWait(newer->SetValueAsync(TimeSpan(99999999)));
    EXPECT_EQ(newer->Value().count(), 10000000);
    control->Exposure()->TrySetValue(-2);
    EXPECT_EQ(newer->Value().count(), 2500000);
}

TEST_F(SimulatedControlsTest, AnotherNewerControlIsSetByPreset) {
    const auto control = controller(
        R"({"focusControl": {"supported": true, "preset": 3}, "whiteBalanceControl": {"supported": true, "preset": 4}})");
    EXPECT_TRUE(control->FocusControl()->Supported());
    EXPECT_EQ(control->FocusControl()->Preset(), FocusPreset::AutoNormal);
    blockingWait(control->FocusControl()->SetPresetAsync(FocusPreset::Auto));
    EXPECT_EQ(control->FocusControl()->Preset(), FocusPreset::Auto);
    EXPECT_TRUE(control->WhiteBalanceControl()->Supported());
    EXPECT_EQ(control->WhiteBalanceControl()->Preset(), ColorTemperaturePreset::Flash);
    blockingWait(control->WhiteBalanceControl()->SetPresetAsync(ColorTemperaturePreset::Auto));
    EXPECT_EQ(control->WhiteBalanceControl()->Preset(), ColorTemperaturePreset::Auto);
}

TEST_F(SimulatedControlsTest, AnIsoSpeedEndsAutomaticMode) {
    const auto iso = controller(R"({"isoSpeedControl": {"supported": true, "auto": true}})")->IsoSpeedControl();
    EXPECT_TRUE(iso->Supported());
    EXPECT_TRUE(iso->Auto());
    EXPECT_EQ(iso->Min(), 100U);
    EXPECT_EQ(iso->Max(), 800U);
    EXPECT_EQ(iso->Step(), 100U);
    EXPECT_EQ(iso->Value(), 100U);
    blockingWait(iso->SetValueAsync(350));
    EXPECT_EQ(iso->Value(), 400U);
    EXPECT_FALSE(iso->Auto());
    blockingWait(iso->SetValueAsync(4294967295));
    EXPECT_EQ(iso->Value(), 800U);
}

TEST_F(SimulatedControlsTest, ExposureCompensationIsRead) {
    const auto control = controller(R"({"exposureCompensationControl": {"supported": true, "value": -0.5}})");
    EXPECT_TRUE(control->ExposureCompensationControl()->Supported());
    EXPECT_EQ(control->ExposureCompensationControl()->Value(), -0.5F);
}

TEST_F(SimulatedControlsTest, ANewerControlThatIsMissingCannotBeSet) {
    const auto control = controller("{}");
    EXPECT_FALSE(control->ExposureControl()->Supported());
    EXPECT_FALSE(control->FocusControl()->Supported());
    EXPECT_FALSE(control->WhiteBalanceControl()->Supported());
    EXPECT_FALSE(control->IsoSpeedControl()->Supported());
    EXPECT_FALSE(control->ExposureCompensationControl()->Supported());
    EXPECT_TRUE(outcomeOf([&] { blockingWait(control->ExposureControl()->SetAutoAsync(true)); }).raised);
    EXPECT_TRUE(outcomeOf([&] { blockingWait(control->ExposureControl()->SetValueAsync(TimeSpan(1))); }).raised);
    EXPECT_TRUE(outcomeOf([&] { blockingWait(control->FocusControl()->SetPresetAsync({})); }).raised);
    EXPECT_TRUE(outcomeOf([&] { blockingWait(control->WhiteBalanceControl()->SetPresetAsync({})); }).raised);
    EXPECT_TRUE(outcomeOf([&] { blockingWait(control->IsoSpeedControl()->SetValueAsync(1)); }).raised);
}

} // namespace
