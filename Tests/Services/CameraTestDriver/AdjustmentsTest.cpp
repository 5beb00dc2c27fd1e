#include "Services/CameraTestDriver/Adjustments.h"

#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using Texts = std::vector<std::string>;

class AdjustmentsTest : public DriverFixture {
protected:
    using Command = void (*)(Console&, Platform::MediaCapture, bool);

    /// What the command writes for a camera of that hardware.
    std::string run(Command command, bool up, const std::string& hardware) {
        useCamera(hardware);
        TypedConsole console;
        command(console, openCamera(), up);
        return console.text();
    }
};

constexpr bool up = true;
constexpr bool down = false;

TEST_F(AdjustmentsTest, BrightnessIsSteppedUpByItsOwnStepWithTheAutomaticOff) {
    EXPECT_EQ(
        run(adjustBrightness, up,
            R"({"brightness": {"supported": true, "min": -64, "max": 64, "step": 2.5, "value": 11, "auto": true}})"),
        "Brightness range: [-64.000000 , 64.000000\n"
        "Brightness set to: 13.500000. Latched to: 13.500000\n");
    EXPECT_EQ(changes(), (Texts{"MediaDeviceControl.TrySetAuto Brightness[false]",
                                "MediaDeviceControl.TrySetValue Brightness[13.5]"}));
}

TEST_F(AdjustmentsTest, BrightnessIsSteppedDown) {
    EXPECT_EQ(run(adjustBrightness, down,
                  R"({"brightness": {"supported": true, "min": -64, "max": 64, "step": 1, "value": 0}})"),
              "Brightness range: [-64.000000 , 64.000000\n"
              "Brightness set to: -1.000000. Latched to: -1.000000\n");
}

TEST_F(AdjustmentsTest, BrightnessBeyondTheMaximumIsSentAllTheSame) {
    EXPECT_EQ(
        run(adjustBrightness, up, R"({"brightness": {"supported": true, "min": 0, "max": 10, "step": 4, "value": 8}})"),
        "Brightness range: [0.000000 , 10.000000\n"
        "Brightness set to: 12.000000. Latched to: 8.000000\n");
    EXPECT_EQ(changes().back(), "MediaDeviceControl.TrySetValue Brightness[12.0]");
}

TEST_F(AdjustmentsTest, BrightnessThatIsNotSupportedIsOneLineAndNoChange) {
    EXPECT_EQ(run(adjustBrightness, up, "{}"), "Brightness changes not supported \n");
    EXPECT_EQ(changes(), Texts{});
}

TEST_F(AdjustmentsTest, BrightnessGoesOnWhenTheAutomaticDoesNotGoOff) {
    EXPECT_EQ(run(adjustBrightness, up,
                  R"({"brightness": {"supported": true, "min": 0, "max": 10, "step": 1, "refuse": ["TrySetAuto"]}})"),
              "Can't disable auto brightness\n"
              "Brightness range: [0.000000 , 10.000000\n"
              "Brightness set to: 1.000000. Latched to: 1.000000\n");
}

TEST_F(AdjustmentsTest, BrightnessThatCannotBeReadCountsAs0) {
    EXPECT_EQ(
        run(adjustBrightness, up,
            R"({"brightness": {"supported": true, "max": 10, "step": 3, "value": 7, "refuse": ["TryGetValue"]}})"),
        "Failed to read Brightness\n")
        << "what cannot be read again is not reported";
    EXPECT_EQ(changes().back(), "MediaDeviceControl.TrySetValue Brightness[3.0]");
}

TEST_F(AdjustmentsTest, BrightnessThatCannotBeSetIsReportedWithWhatTheCameraHas) {
    EXPECT_EQ(
        run(adjustBrightness, down,
            R"({"brightness": {"supported": true, "max": 10, "step": 3, "value": 7, "refuse": ["TrySetValue"]}})"),
        "Failed to set Brightness\n"
        "Brightness range: [0.000000 , 10.000000\n"
        "Brightness set to: 4.000000. Latched to: 7.000000\n");
}

TEST_F(AdjustmentsTest, TheStepAndTheRangeAreReadOnceTheAutomaticIsOff) {
    useCamera(R"({"brightness": {"supported": true, "max": 10, "step": 1},
                  "faults": {"MediaDeviceControl.Capabilities": {"code": -7, "after": 1}}})");
    TypedConsole console;
    EXPECT_EQ(errorOf([&] { adjustBrightness(console, openCamera(), up); }).code(), -7);
    EXPECT_EQ(changes(), Texts{"MediaDeviceControl.TrySetAuto Brightness[false]"});
}

TEST_F(AdjustmentsTest, ContrastIsSteppedLikeBrightness) {
    EXPECT_EQ(
        run(adjustContrast, down, R"({"contrast": {"supported": true, "min": 0, "max": 10, "step": 0.5, "value": 2}})"),
        "Contrast range: [0.000000 , 10.000000\n"
        "Contrast set to: 1.500000. Latched to: 1.500000\n");
    EXPECT_EQ(changes(),
              (Texts{"MediaDeviceControl.TrySetAuto Contrast[false]", "MediaDeviceControl.TrySetValue Contrast[1.5]"}));
}

TEST_F(AdjustmentsTest, ContrastThatIsNotSupportedIsOneLineAndNoChange) {
    EXPECT_EQ(run(adjustContrast, up, "{}"), "Contrast changes not supported \n");
    EXPECT_EQ(changes(), Texts{});
}

TEST_F(AdjustmentsTest, ContrastGoesOnAfterEveryRefusal) {
    EXPECT_EQ(run(adjustContrast, up,
                  R"({"contrast": {"supported": true, "max": 9, "step": 1,
                "refuse": ["TrySetAuto", "TryGetValue", "TrySetValue"]}})"),
              "Can't disable auto contrast\n"
              "Failed to read Contrast\n"
              "Failed to set Contrast\n");
    EXPECT_EQ(changes().back(), "MediaDeviceControl.TrySetValue Contrast[1.0]");
}

constexpr const char* bothExposures = R"({
    "exposureControl": {"supported": true, "auto": true, "min": 1000, "max": 10000000, "step": 1000, "value": 333000},
    "exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6}})";

TEST_F(AdjustmentsTest, ExposurePrefersTheNewerControlAndCountsInTicks) {
    const std::string text = run(adjustExposure, up, R"({"exposureControl":
        {"supported": true, "min": 1000, "max": 10000000, "step": 1000, "value": 333000}})");
    EXPECT_EQ(text, "ExposureControl range: [1000 , 10000000\n"
                    "ExposureControl set to: 334000. Latched to: 334000\n");
    EXPECT_EQ(changes(), (Texts{"ExposureControl.SetAutoAsync [false]", "ExposureControl.SetValueAsync [334000]"}));
}

TEST_F(AdjustmentsTest, ExposureWithBothControlsNeverTouchesTheOlderOne) {
    const std::string text = run(adjustExposure, down, bothExposures);
    EXPECT_EQ(text.rfind("ExposureControl range: [1000 , 10000000\nExposureControl set to: ", 0), 0U) << text;
    EXPECT_EQ(text.find("\nExposure"), text.find("\nExposureControl set to: ")) << text;
    for (const std::string& change : changes())
        EXPECT_EQ(change.rfind("ExposureControl.", 0), 0U) << change;
}

TEST_F(AdjustmentsTest, ExposureOfTheNewerControlMayGoBelowTheRange) {
    EXPECT_EQ(run(adjustExposure, down, R"({"exposureControl":
        {"supported": true, "min": 1000, "max": 10000000, "step": 5000, "value": 1000}})"),
              "ExposureControl range: [1000 , 10000000\n"
              "ExposureControl set to: -4000. Latched to: 1000\n");
}

TEST_F(AdjustmentsTest, ExposureOfTheOlderControlIsSteppedInPowersOfTwo) {
    EXPECT_EQ(run(adjustExposure, up,
                  R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6, "auto": false}})"),
              "Exposure range: [-13.000000 , 0.000000\n"
              "Exposure set to: -5.000000. Latched to: -5.000000\n");
    EXPECT_EQ(changes(), (Texts{"MediaDeviceControl.TrySetAuto Exposure[false]",
                                "MediaDeviceControl.TrySetValue Exposure[-5.0]"}));
}

TEST_F(AdjustmentsTest, ExposureThatIsNotSupportedIsOneLineAndNoChange) {
    EXPECT_EQ(run(adjustExposure, up, "{}"), "Exposure changes not supported\n");
    EXPECT_EQ(changes(), Texts{});
}

TEST_F(AdjustmentsTest, ExposureStopsWhenTheAutomaticDoesNotGoOff) {
    EXPECT_EQ(run(adjustExposure, up,
                  R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "refuse": ["TrySetAuto"]}})"),
              "Can't disable auto exposure\n");
    EXPECT_EQ(changes(), Texts{"MediaDeviceControl.TrySetAuto Exposure[false]"});
}

TEST_F(AdjustmentsTest, ExposureStopsWhenItCannotBeRead) {
    EXPECT_EQ(run(adjustExposure, up,
                  R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "refuse": ["TryGetValue"]}})"),
              "Failed to read exposure\n");
    EXPECT_EQ(changes(), Texts{"MediaDeviceControl.TrySetAuto Exposure[false]"});
}

TEST_F(AdjustmentsTest, ExposureStopsWhenItCannotBeSet) {
    EXPECT_EQ(run(adjustExposure, up,
                  R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "refuse": ["TrySetValue"]}})"),
              "Failed to set exposure\n");
}

TEST_F(AdjustmentsTest, IsoIsSteppedInItsOwnControl) {
    EXPECT_EQ(run(adjustIso, up, R"({"isoSpeedControl": {"supported": true, "value": 200}})"),
              "IsoSpeedControl range: [100 , 800\n"
              "IsoSpeedControl set to: 300. Latched to: 300\n");
    EXPECT_EQ(changes(), Texts{"IsoSpeedControl.SetValueAsync [300]"});
}

TEST_F(AdjustmentsTest, IsoBeyondTheRangeIsSentAllTheSame) {
    EXPECT_EQ(run(adjustIso, up, R"({"isoSpeedControl": {"supported": true, "value": 800}})"),
              "IsoSpeedControl range: [100 , 800\n"
              "IsoSpeedControl set to: 900. Latched to: 800\n");
    EXPECT_EQ(run(adjustIso, down, R"({"isoSpeedControl": {"supported": true, "value": 100}})"),
              "IsoSpeedControl range: [100 , 800\n"
              "IsoSpeedControl set to: 0. Latched to: 100\n");
}

TEST_F(AdjustmentsTest, IsoInAutomaticModeIsLeftAlone) {
    EXPECT_EQ(run(adjustIso, up, R"({"isoSpeedControl": {"supported": true, "auto": true}})"),
              "IsoSpeedControl is auto \n");
    EXPECT_EQ(changes(), Texts{});
}

TEST_F(AdjustmentsTest, IsoThatIsNotSupportedIsOneLineAndNoChange) {
    EXPECT_EQ(run(adjustIso, down, "{}"), "IsoSpeedControl changes not supported\n");
    EXPECT_EQ(changes(), Texts{});
}

TEST_F(AdjustmentsTest, AFailureOfThePlatformGoesToTheCaller) {
    useCamera(R"({"exposureControl": {"supported": true},
                  "faults": {"ExposureControl.SetValueAsync": {"message": "It broke.", "code": -7}}})");
    TypedConsole console;
    const auto error = errorOf([&] { adjustExposure(console, openCamera(), up); });
    EXPECT_EQ(error.code(), -7);
    EXPECT_EQ(error.message(), u"It broke.");
    EXPECT_EQ(console.text(), "");
}

} // namespace
