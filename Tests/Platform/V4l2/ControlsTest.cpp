#include "Tests/Platform/V4l2/CameraFixture.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Platform::V4l2 {
namespace {

using Writes = std::vector<std::pair<std::uint32_t, std::int32_t>>;

class ControlsTest : public CameraFixture {
protected:
    VideoDeviceController controllerOf(FakeDevice device) {
        plug(std::move(device));
        _capture = open();
        return _capture->VideoDeviceController();
    }
    VideoDeviceController controller() { return controllerOf(usbCamera()); }
    const MediaCapture& capture() const { return _capture; }

private:
    MediaCapture _capture;
};

bool isAuto(const MediaDeviceControl& control) {
    bool on = false;
    EXPECT_TRUE(control->TryGetAuto(on));
    return on;
}

double valueOf(const MediaDeviceControl& control) {
    double value = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(control->TryGetValue(value));
    return value;
}

TEST_F(ControlsTest, CapabilitiesTellWhatTheCameraHas) {
    const auto all = controller();
    const auto exposure = all->Exposure()->Capabilities();
    EXPECT_TRUE(exposure.Supported);
    EXPECT_TRUE(exposure.AutoModeSupported);
    EXPECT_EQ(exposure.Min, -11.0);
    EXPECT_EQ(exposure.Max, -3.0);
    EXPECT_EQ(exposure.Step, 1.0);
    const auto focus = all->Focus()->Capabilities();
    EXPECT_TRUE(focus.AutoModeSupported);
    EXPECT_EQ(focus.Max, 250.0);
    EXPECT_EQ(focus.Step, 5.0);
    const auto balance = all->WhiteBalance()->Capabilities();
    EXPECT_EQ(balance.Min, 2800.0);
    EXPECT_EQ(all->Brightness()->Capabilities().Min, -64.0);
    EXPECT_FALSE(all->Brightness()->Capabilities().AutoModeSupported);
    EXPECT_EQ(all->Contrast()->Capabilities().Max, 95.0);
}

TEST_F(ControlsTest, ACameraWithoutControlsSaysSo) {
    FakeDevice device = usbCamera();
    device.controls.clear();
    const auto all = controllerOf(device);
    for (const auto& control :
         {all->Exposure(), all->Focus(), all->WhiteBalance(), all->Brightness(), all->Contrast()}) {
        EXPECT_FALSE(control->Capabilities().Supported);
        EXPECT_FALSE(control->TrySetValue(1.0));
        EXPECT_FALSE(control->TrySetAuto(true));
        EXPECT_TRUE(control->TrySetAuto(false)); // it is off
        double value = 7.0;
        bool on = true;
        EXPECT_FALSE(control->TryGetValue(value));
        EXPECT_FALSE(control->TryGetAuto(on));
        EXPECT_EQ(value, 7.0);
        EXPECT_TRUE(on);
    }
    EXPECT_FALSE(all->IsoSpeedControl()->Supported());
    EXPECT_FALSE(all->IsoSpeedControl()->Auto());
    EXPECT_FALSE(all->ExposureCompensationControl()->Supported());
    EXPECT_EQ(raisedBy([&] { all->IsoSpeedControl()->Min(); }),
              "8000000E IsoSpeedControl.Min on /dev/video0: the camera has no such control");
    EXPECT_EQ(raisedBy([&] { all->IsoSpeedControl()->Value(); }),
              "80004005 IsoSpeedControl.Value on /dev/video0: the camera refuses");
    EXPECT_EQ(raisedBy([&] { blockingWait(all->IsoSpeedControl()->SetValueAsync(100)); }),
              "80004005 IsoSpeedControl.SetValueAsync on /dev/video0: the camera refuses");
    EXPECT_EQ(raisedBy([&] { all->ExposureCompensationControl()->Value(); }),
              "80004005 ExposureCompensationControl.Value on /dev/video0: the camera refuses");
}

TEST_F(ControlsTest, TheNewerExposureFocusAndWhiteBalanceAreNotThere) {
    const auto all = controller();
    EXPECT_FALSE(all->ExposureControl()->Supported());
    EXPECT_FALSE(all->FocusControl()->Supported());
    EXPECT_FALSE(all->WhiteBalanceControl()->Supported());
    const std::string end = " on /dev/video0: the camera has no such control";
    const std::vector<std::pair<std::string, std::function<void()>>> uses{
        {"ExposureControl.Auto", [&] { all->ExposureControl()->Auto(); }},
        {"ExposureControl.Min", [&] { all->ExposureControl()->Min(); }},
        {"ExposureControl.Max", [&] { all->ExposureControl()->Max(); }},
        {"ExposureControl.Step", [&] { all->ExposureControl()->Step(); }},
        {"ExposureControl.Value", [&] { all->ExposureControl()->Value(); }},
        {"ExposureControl.SetAutoAsync", [&] { all->ExposureControl()->SetAutoAsync(true); }},
        {"ExposureControl.SetValueAsync", [&] { all->ExposureControl()->SetValueAsync(TimeSpan(1)); }},
        {"FocusControl.Preset", [&] { all->FocusControl()->Preset(); }},
        {"FocusControl.SetPresetAsync", [&] { all->FocusControl()->SetPresetAsync(FocusPreset::Auto); }},
        {"WhiteBalanceControl.Preset", [&] { all->WhiteBalanceControl()->Preset(); }},
        {"WhiteBalanceControl.SetPresetAsync",
         [&] { all->WhiteBalanceControl()->SetPresetAsync(ColorTemperaturePreset::Auto); }},
    };
    for (const auto& [name, use] : uses)
        EXPECT_EQ(raisedBy(use), "8000000E " + name + end);
}

TEST_F(ControlsTest, ExposureIsSetInStopsAndReadBack) {
    const auto exposure = controller()->Exposure();
    ASSERT_TRUE(exposure->TrySetAuto(false));
    for (int stop = -11; stop <= -3; ++stop) {
        ASSERT_TRUE(exposure->TrySetValue(stop));
        EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), std::lround(std::exp2(stop) * 10'000));
        EXPECT_EQ(std::round(valueOf(exposure)), stop);
    }
}

TEST_F(ControlsTest, ExposuresBeyondTheRangeGoToItsEnds) {
    const auto exposure = controller()->Exposure();
    EXPECT_TRUE(exposure->TrySetValue(-100.0));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 3);
    EXPECT_TRUE(exposure->TrySetValue(100.0));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 2047);
    EXPECT_TRUE(exposure->TrySetValue(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 3);
    EXPECT_FALSE(exposure->TrySetValue(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 3);
}

TEST_F(ControlsTest, TheAutomaticIsTurnedOffInACallOfItsOwnBeforeAValueIsSet) {
    const auto exposure = controller()->Exposure();
    ASSERT_TRUE(isAuto(exposure));
    EXPECT_TRUE(exposure->TrySetValue(-4.0));
    EXPECT_EQ(driver->writes(videoPath),
              (Writes{{V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL}, {V4L2_CID_EXPOSURE_ABSOLUTE, 625}}));
    EXPECT_FALSE(isAuto(exposure));
}

TEST_F(ControlsTest, EachCameraHasItsOwnModes) {
    struct Menu {
        std::map<std::int32_t, std::int64_t> entries;
        std::int32_t on;
        std::int32_t off;
    };
    for (const Menu& menu : {Menu{{{0, 0}, {1, 0}}, V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL},
                             Menu{{{1, 0}, {3, 0}}, V4L2_EXPOSURE_APERTURE_PRIORITY, V4L2_EXPOSURE_MANUAL},
                             Menu{{{0, 0}, {1, 0}, {2, 0}, {3, 0}}, V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL},
                             Menu{{{0, 0}, {2, 0}}, V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_SHUTTER_PRIORITY}}) {
        FakeDevice device = usbCamera();
        device.controls[V4L2_CID_EXPOSURE_AUTO].menu = menu.entries;
        device.controls[V4L2_CID_EXPOSURE_AUTO].value = menu.off;
        const auto exposure = controllerOf(device)->Exposure();
        EXPECT_TRUE(exposure->Capabilities().AutoModeSupported);
        EXPECT_TRUE(exposure->TrySetAuto(true));
        EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_AUTO), menu.on);
        EXPECT_TRUE(isAuto(exposure));
        EXPECT_TRUE(exposure->TrySetAuto(false));
        EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_AUTO), menu.off);
        EXPECT_FALSE(isAuto(exposure));
    }
}

TEST_F(ControlsTest, ACameraWithoutAManualModeCannotTurnTheAutomaticOff) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_EXPOSURE_AUTO].menu = {{3, 0}};
    const auto exposure = controllerOf(device)->Exposure();
    EXPECT_FALSE(exposure->Capabilities().AutoModeSupported);
    EXPECT_FALSE(exposure->TrySetAuto(false));
    EXPECT_FALSE(exposure->TrySetValue(-4.0));
}

TEST_F(ControlsTest, TurningTheAutomaticOffKeepsWhatItHasFound) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_EXPOSURE_ABSOLUTE].value = 321; // the automatic's
    device.exposureAfterAuto = 1000;                         // the latest set by hand
    const auto exposure = controllerOf(device)->Exposure();
    EXPECT_TRUE(exposure->TrySetAuto(false));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 321);
}

TEST_F(ControlsTest, FocusAndWhiteBalanceAreFrozenInTheSameWay) {
    const auto all = controller();
    EXPECT_TRUE(all->Focus()->TrySetAuto(false));
    EXPECT_TRUE(all->WhiteBalance()->TrySetAuto(false));
    EXPECT_EQ(driver->writes(videoPath), (Writes{{V4L2_CID_FOCUS_AUTO, 0}, {V4L2_CID_AUTO_WHITE_BALANCE, 0}}));
    EXPECT_TRUE(all->WhiteBalance()->TrySetValue(5003));
    EXPECT_EQ(valueOf(all->WhiteBalance()), 5000.0);
    EXPECT_TRUE(all->Focus()->TrySetValue(1e9));
    EXPECT_EQ(valueOf(all->Focus()), 250.0);
    EXPECT_TRUE(all->Focus()->TrySetAuto(true));
    EXPECT_TRUE(isAuto(all->Focus()));
}

TEST_F(ControlsTest, AnAutomaticThatIsAsWantedIsLeftAlone) {
    const auto exposure = controller()->Exposure();
    EXPECT_TRUE(exposure->TrySetAuto(true));
    EXPECT_TRUE(driver->writes(videoPath).empty());
}

/// The settings of a first capture, in the hub's order.
void setForFirstCapture(const VideoDeviceController& all) {
    for (const bool on : {true, false})
        for (const auto& control : {all->Exposure(), all->Focus(), all->WhiteBalance()}) {
            control->Capabilities();
            EXPECT_TRUE(control->TrySetAuto(on));
        }
    all->Exposure()->Capabilities();
    EXPECT_TRUE(all->Exposure()->TrySetValue(-5.0));
    valueOf(all->Exposure());
}

TEST_F(ControlsTest, WhatACameraHasIsAskedOnce) {
    const auto all = controller();
    const auto descriptions = [this] { return driver->calls(VIDIOC_QUERYCTRL) + driver->calls(VIDIOC_QUERYMENU); };
    setForFirstCapture(all);
    const unsigned first = descriptions();
    EXPECT_EQ(driver->calls(VIDIOC_QUERYCTRL), 6u); // the three values and their automatics
    EXPECT_LE(driver->calls(VIDIOC_QUERYMENU), 4u); // the modes of the exposure
    setForFirstCapture(all);
    EXPECT_EQ(descriptions(), first);
}

TEST_F(ControlsTest, AFirstCaptureReadsAndWritesNoMoreThanItsSettingsTake) {
    const auto all = controller();
    setForFirstCapture(all);
    // Each automatic: its mode and perhaps a write for on; its mode, the value, a write and the value for off. Then the
    // exposure: mode, write, value.
    EXPECT_LE(driver->calls(VIDIOC_G_CTRL), 3u * (1 + 3) + 2u);
    EXPECT_LE(driver->calls(VIDIOC_S_CTRL), 3u * 2 + 1u);
}

TEST_F(ControlsTest, WhatCouldNotBeAskedIsAskedAgain) {
    const auto exposure = controller()->Exposure();
    driver->failOn(VIDIOC_QUERYCTRL, EIO, 0, 3); // the two values, and the automatic
    EXPECT_FALSE(exposure->Capabilities().Supported);
    EXPECT_TRUE(exposure->Capabilities().Supported);
}

TEST_F(ControlsTest, AnotherFormatMayHaveOtherRanges) {
    const auto all = controller();
    all->Exposure()->Capabilities();
    const unsigned before = driver->calls(VIDIOC_QUERYCTRL);
    setFormat(capture(), 1);
    all->Exposure()->Capabilities();
    EXPECT_GT(driver->calls(VIDIOC_QUERYCTRL), before);
}

TEST_F(ControlsTest, BrightnessIsSetInItsOwnUnit) {
    const auto brightness = controller()->Brightness();
    EXPECT_TRUE(brightness->TrySetAuto(false));
    EXPECT_FALSE(brightness->TrySetAuto(true));
    EXPECT_TRUE(brightness->TrySetValue(-20.0));
    EXPECT_EQ(valueOf(brightness), -20.0);
    EXPECT_TRUE(brightness->TrySetValue(900.0));
    EXPECT_EQ(valueOf(brightness), 64.0);
}

TEST_F(ControlsTest, TheOldExposureControlIsTakenWhereOnlyThatExists) {
    FakeDevice device = usbCamera();
    device.controls.erase(V4L2_CID_EXPOSURE_ABSOLUTE);
    device.controls.erase(V4L2_CID_EXPOSURE_AUTO);
    device.controls[V4L2_CID_EXPOSURE] = {V4L2_CTRL_TYPE_INTEGER, 1, 5000, 1, 100};
    const auto exposure = controllerOf(device)->Exposure();
    EXPECT_EQ(exposure->Capabilities().Max, -1.0);
    EXPECT_TRUE(exposure->TrySetValue(-1.0));
    EXPECT_EQ(driver->control(videoPath, V4L2_CID_EXPOSURE), 5000);
}

TEST_F(ControlsTest, AnExposureThatOnlyTheCameraSetsHasNoStep) {
    FakeDevice device = usbCamera();
    device.controls.erase(V4L2_CID_EXPOSURE_ABSOLUTE);
    const auto capabilities = controllerOf(device)->Exposure()->Capabilities();
    EXPECT_TRUE(capabilities.Supported);
    EXPECT_TRUE(capabilities.AutoModeSupported);
    EXPECT_EQ(capabilities.Min, -4.0);
    EXPECT_EQ(capabilities.Max, -4.0);
    EXPECT_EQ(capabilities.Step, 0.0);
}

TEST_F(ControlsTest, AControlThatCanOnlyBeReadHasNoStep) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_CONTRAST].flags = V4L2_CTRL_FLAG_READ_ONLY;
    const auto contrast = controllerOf(device)->Contrast();
    EXPECT_EQ(contrast->Capabilities().Step, 0.0);
    EXPECT_FALSE(contrast->TrySetValue(3.0));
}

TEST_F(ControlsTest, ADisabledControlIsNotThere) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_CONTRAST].flags = V4L2_CTRL_FLAG_DISABLED;
    EXPECT_FALSE(controllerOf(device)->Contrast()->Capabilities().Supported);
}

TEST_F(ControlsTest, EachRefusalIsAResultAndNoError) {
    const auto exposure = controller()->Exposure();
    ASSERT_TRUE(exposure->TrySetAuto(false));
    double value = 0;
    for (const int error :
         {EACCES, EBUSY, EILSEQ, EINVAL, EIO, ENOTTY, EOVERFLOW, EPIPE, EPROTO, ERANGE, EREMOTE, EREMOTEIO}) {
        driver->failOn(VIDIOC_S_CTRL, error, 0, 1);
        EXPECT_FALSE(exposure->TrySetValue(-4.0)) << error;
        driver->failOn(VIDIOC_S_CTRL, error, 0, 1);
        EXPECT_FALSE(exposure->TrySetAuto(true)) << error;
        driver->heal();
        driver->failOn(VIDIOC_G_CTRL, error, 0, 1);
        EXPECT_FALSE(exposure->TryGetValue(value)) << error;
        driver->heal();
    }
    EXPECT_TRUE(exposure->TrySetValue(-4.0));
}

TEST_F(ControlsTest, ACameraThatDoesNotAnswerIsAnError) {
    const auto exposure = controller()->Exposure();
    driver->failOn(VIDIOC_S_CTRL, ETIMEDOUT);
    EXPECT_EQ(raisedBy([&] { exposure->TrySetValue(-4.0); }),
              "800705B4 VIDIOC_S_CTRL on /dev/video0: Connection timed out (the camera does not answer)");
}

TEST_F(ControlsTest, IsoSpeedsAreThoseOfTheMenu) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_ISO_SENSITIVITY] = {
        V4L2_CTRL_TYPE_INTEGER_MENU, 0, 3, 1, 1, 0, {{0, 100'000}, {1, 200'000}, {2, 400'000}, {3, 800'000}}};
    device.controls[V4L2_CID_ISO_SENSITIVITY_AUTO] = {V4L2_CTRL_TYPE_MENU, 0, 1, 1, 1, 0, {{0, 0}, {1, 0}}};
    const auto iso = controllerOf(device)->IsoSpeedControl();
    EXPECT_TRUE(iso->Supported());
    EXPECT_TRUE(iso->Auto());
    EXPECT_EQ(iso->Min(), 100u);
    EXPECT_EQ(iso->Max(), 800u);
    EXPECT_EQ(iso->Step(), 100u);
    EXPECT_EQ(iso->Value(), 200u);
    blockingWait(iso->SetValueAsync(390));
    EXPECT_FALSE(iso->Auto());
    EXPECT_EQ(iso->Value(), 400u);
    EXPECT_EQ(driver->writes(videoPath), (Writes{{V4L2_CID_ISO_SENSITIVITY_AUTO, 0}, {V4L2_CID_ISO_SENSITIVITY, 2}}));
    driver->failOn(VIDIOC_S_CTRL, EIO);
    EXPECT_EQ(raisedBy([&] { blockingWait(iso->SetValueAsync(100)); }),
              "80004005 IsoSpeedControl.SetValueAsync on /dev/video0: the camera refuses");
}

TEST_F(ControlsTest, ASensitivityWithoutAMenuIsNotTaken) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_ISO_SENSITIVITY] = {V4L2_CTRL_TYPE_INTEGER, 0, std::numeric_limits<std::int32_t>::max()};
    EXPECT_FALSE(controllerOf(device)->IsoSpeedControl()->Supported());
    EXPECT_EQ(driver->calls(VIDIOC_QUERYMENU), 0u);
}

TEST_F(ControlsTest, AMenuWithoutEndIsCutOff) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_ISO_SENSITIVITY] = {
        V4L2_CTRL_TYPE_INTEGER_MENU, 0, std::numeric_limits<std::int32_t>::max(), 1, 0, 0, {{0, 100'000}}};
    EXPECT_EQ(controllerOf(device)->IsoSpeedControl()->Max(), 100u);
    EXPECT_LE(driver->calls(VIDIOC_QUERYMENU), 1000u);
}

TEST_F(ControlsTest, TheExposureBiasIsInStops) {
    FakeDevice device = usbCamera();
    device.controls[V4L2_CID_AUTO_EXPOSURE_BIAS] = {V4L2_CTRL_TYPE_INTEGER_MENU,    0, 2, 1, 0, 0,
                                                    {{0, -1500}, {1, 0}, {2, 1500}}};
    const auto bias = controllerOf(device)->ExposureCompensationControl();
    EXPECT_TRUE(bias->Supported());
    EXPECT_FLOAT_EQ(bias->Value(), -1.5f);
}

} // namespace
} // namespace Platform::V4l2
