#include "Services/CameraTestDriver/CameraStatus.h"

#include "Platform/Interface/AsyncWait.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

class CameraStatusTest : public DriverFixture {
protected:
    std::string statusOf(const std::string& hardware) {
        useCamera(hardware);
        TypedConsole console;
        printCameraStatus(console, openCamera());
        return console.text();
    }
};

TEST_F(CameraStatusTest, ACameraWithoutControlsTellsTheStateOfItsStream) {
    EXPECT_EQ(statusOf("{}"), "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, TheNewerControlsInTheirOrder) {
    EXPECT_EQ(statusOf(R"({"exposureControl": {"supported": true, "auto": false, "value": 333000},
                           "exposureCompensationControl": {"supported": true, "value": -0.5},
                           "isoSpeedControl": {"supported": true, "auto": true},
                           "whiteBalanceControl": {"supported": true, "preset": 3}})"),
              "Auto ExposureControl:  off \n"
              "Exposure time: 333000\n"
              "Exposure comp: -0.500000\n"
              "ISO speed auto: 1\n"
              "WB control: 3\n"
              "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, TheOlderControls) {
    EXPECT_EQ(statusOf(R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6},
                           "isoSpeedControl": {"supported": true, "auto": false},
                           "whiteBalance": {"supported": true, "auto": true}})"),
              "Auto Exposure:  off \n"
              "Exposure time: -6.000000\n"
              "ISO speed auto: 0\n"
              "WB auto: 1\n"
              "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, AutomaticExposureIsOnInBothGenerations) {
    const std::string newer = statusOf(R"({"exposureControl": {"supported": true, "auto": true}})");
    EXPECT_EQ(newer.substr(0, newer.find('\n')), "Auto ExposureControl:  on ");
    const std::string older = statusOf(R"({"exposure": {"supported": true, "auto": true}})");
    EXPECT_EQ(older.substr(0, older.find('\n')), "Auto Exposure:  on ");
}

TEST_F(CameraStatusTest, TheOlderExposureIsNotAskedBesideTheNewer) {
    const std::string text = statusOf(R"({"exposureControl": {"supported": true}, "exposure": {"supported": true}})");
    EXPECT_EQ(text.find("Auto Exposure: "), std::string::npos) << text;
}

TEST_F(CameraStatusTest, BothWhiteBalancesAreTold) {
    EXPECT_EQ(statusOf(R"({"whiteBalanceControl": {"supported": true}, "whiteBalance": {"supported": true}})"),
              "WB control: 0\n"
              "WB auto: 0\n"
              "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, AnExposureThatCannotBeReadIsPassedOverInSilence) {
    EXPECT_EQ(statusOf(R"({"exposure": {"supported": true, "refuse": ["TryGetAuto", "TryGetValue"]}})"),
              "Camera Stream State: 0\n");
    EXPECT_EQ(statusOf(R"({"exposure": {"supported": true, "refuse": ["TryGetAuto"]}})"), "Exposure time: 0.000000\n"
                                                                                          "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, AWhiteBalanceThatCannotBeReadIsTold) {
    EXPECT_EQ(statusOf(R"({"whiteBalance": {"supported": true, "refuse": ["TryGetAuto"]}})"),
              "Failed to get auto\n"
              "Camera Stream State: 0\n");
}

TEST_F(CameraStatusTest, ARunningStreamIsState1) {
    useCamera("{}");
    const auto capture = openCamera();
    const auto sources = capture->FrameSources();
    const auto reader = Platform::blockingWait(capture->CreateFrameReaderAsync(sources.begin()->second));
    Platform::blockingWait(reader->StartAsync());
    TypedConsole console;
    printCameraStatus(console, capture);
    EXPECT_EQ(console.text(), "Camera Stream State: 1\n");
}

TEST_F(CameraStatusTest, ACaptureThatIsNotOpenRaises) {
    useCamera("{}");
    TypedConsole console;
    errorOf([&] { printCameraStatus(console, connectionTo("another camera").mediaCapture); });
    EXPECT_EQ(console.text(), "");
}

} // namespace
