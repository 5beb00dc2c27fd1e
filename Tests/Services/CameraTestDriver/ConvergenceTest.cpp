#include "Services/CameraTestDriver/Convergence.h"

#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

class ConvergenceTest : public DriverFixture {
protected:
    std::string run(const std::string& hardware, bool exposure, bool focus, bool wb) {
        useCamera(hardware);
        TypedConsole console;
        converge(console, connectionTo("cam"), exposure, focus, wb);
        return console.text();
    }
};

TEST_F(ConvergenceTest, ThreeFalseFlagsDoNothing) {
    EXPECT_EQ(run(R"({"exposure": {"supported": true}})", false, false, false), "");
    EXPECT_EQ(changes(), Texts{});
    EXPECT_TRUE(clock().sleeps().empty());
}

TEST_F(ConvergenceTest, TheOlderControlsAreOnForTwoSeconds) {
    EXPECT_EQ(
        run(R"({"exposure": {"supported": true}, "focus": {"supported": true}, "whiteBalance": {"supported": true}})",
            true, true, true),
        "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
        "Turn auto settings on or off..\n"
        "Auto Exposure:  on \n"
        "Auto Focus:  on \n"
        "Auto WB:  on \n"
        "Converging..\n"
        "Done... turn off auto settings for future captures..\n"
        "Auto Exposure:  off \n"
        "Auto Focus:  off \n"
        "Auto WB:  off \n");
    EXPECT_EQ(
        changes(),
        (Texts{"MediaDeviceControl.TrySetAuto Exposure[true]", "MediaDeviceControl.TrySetAuto Focus[true]",
               "MediaDeviceControl.TrySetAuto WhiteBalance[true]", "MediaDeviceControl.TrySetAuto Exposure[false]",
               "MediaDeviceControl.TrySetAuto Focus[false]", "MediaDeviceControl.TrySetAuto WhiteBalance[false]"}));
    EXPECT_EQ(clock().sleeps(), std::vector{milliseconds(2000)});
}

TEST_F(ConvergenceTest, TheNewerControlsArePreferred) {
    EXPECT_EQ(run(R"({"exposureControl": {"supported": true}, "focusControl": {"supported": true, "preset": 4},
                      "whiteBalanceControl": {"supported": true, "preset": 3}, "exposure": {"supported": true},
                      "focus": {"supported": true}, "whiteBalance": {"supported": true}})",
                  true, true, true),
              "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
              "Turn auto settings on or off..\n"
              "Auto ExposureControl:  on \n"
              "Auto Focus:  on \n"
              "Auto WB:  on \n"
              "Converging..\n"
              "Done... turn off auto settings for future captures..\n"
              "Auto ExposureControl:  off \n"
              "Auto Focus:  off \n"
              "Auto WB:  off \n");
    EXPECT_EQ(changes(), (Texts{"ExposureControl.SetAutoAsync [true]", "FocusControl.SetPresetAsync [0]",
                                "WhiteBalanceControl.SetPresetAsync [0]", "ExposureControl.SetAutoAsync [false]",
                                "FocusControl.SetPresetAsync [0]", "WhiteBalanceControl.SetPresetAsync [0]"}))
        << "the presets stay automatic";
}

TEST_F(ConvergenceTest, AFalseFlagIsSwitchedOffOnce) {
    EXPECT_EQ(
        run(R"({"exposure": {"supported": true}, "focus": {"supported": true}, "whiteBalance": {"supported": true}})",
            true, false, false),
        "Turning on a preview stream to converge: [exposure] \n"
        "Turn auto settings on or off..\n"
        "Auto Exposure:  on \n"
        "Auto Focus:  off \n"
        "Auto WB:  off \n"
        "Converging..\n"
        "Done... turn off auto settings for future captures..\n"
        "Auto Exposure:  off \n");
}

TEST_F(ConvergenceTest, EachFlagIsNamed) {
    EXPECT_EQ(run("{}", false, true, false).substr(0, 50), "Turning on a preview stream to converge: [focus] \n");
    EXPECT_EQ(run("{}", false, false, true).substr(0, 47), "Turning on a preview stream to converge: [WB] \n");
}

TEST_F(ConvergenceTest, ACameraWithoutControls) {
    EXPECT_EQ(run("{}", true, true, true), "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
                                           "Turn auto settings on or off..\n"
                                           "No exposure control supported\n"
                                           "No focus control supported\n"
                                           "No white balance supported\n"
                                           "Converging..\n"
                                           "Done... turn off auto settings for future captures..\n"
                                           "No exposure control supported\n"
                                           "No focus control supported\n"
                                           "No white balance supported\n");
    EXPECT_EQ(clock().sleeps(), std::vector{milliseconds(2000)});
}

TEST_F(ConvergenceTest, ACameraThatRefuses) {
    EXPECT_EQ(run(R"({"exposure": {"supported": true, "refuse": ["TrySetAuto"]},
                      "focus": {"supported": true, "refuse": ["TrySetAuto"]},
                      "whiteBalance": {"supported": true, "refuse": ["TrySetAuto"]}})",
                  true, true, true),
              "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
              "Turn auto settings on or off..\n"
              "Can't set auto exposure:  on \n"
              "Can't set auto focus:  on \n"
              "Can't set auto WB:  on \n"
              "Converging..\n"
              "Done... turn off auto settings for future captures..\n"
              "Can't set auto exposure:  off \n"
              "Can't set auto focus:  off \n"
              "Can't set auto WB:  off \n");
}

TEST_F(ConvergenceTest, ControlsWithoutAutomaticModeAreLeftAloneButForExposure) {
    EXPECT_EQ(run(R"({"exposure": {"supported": true, "autoModeSupported": false},
                      "focus": {"supported": true, "autoModeSupported": false},
                      "whiteBalance": {"supported": true, "autoModeSupported": false}})",
                  true, true, true),
              "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
              "Turn auto settings on or off..\n"
              "Can't set auto exposure:  on \n"
              "Auto Focus not supported\n"
              "Auto White Balance not supported\n"
              "Converging..\n"
              "Done... turn off auto settings for future captures..\n"
              "Auto Exposure:  off \n"
              "Auto Focus is off\n"
              "Auto White Balance is off\n");
    EXPECT_EQ(changes(),
              (Texts{"MediaDeviceControl.TrySetAuto Exposure[true]", "MediaDeviceControl.TrySetAuto Exposure[false]"}));
}

TEST_F(ConvergenceTest, AFailureOfThePlatformGoesToTheCaller) {
    useCamera(R"({"focusControl": {"supported": true}, "faults": {"FocusControl.SetPresetAsync": {"code": -5}}})");
    TypedConsole console;
    EXPECT_EQ(errorOf([&] { converge(console, connectionTo("cam"), true, true, true); }).code(), -5);
    EXPECT_EQ(console.text(), "Turning on a preview stream to converge: [exposure] [focus] [WB] \n"
                              "Turn auto settings on or off..\n"
                              "No exposure control supported\n");
}

} // namespace
