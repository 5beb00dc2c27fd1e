#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"
#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <limits>
#include <utility>

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

constexpr milliseconds noDelay{0};
constexpr const char* unchanged = "INFO Exposure has not changed since last request., camera name: Cam";

class ExposureSettingTest : public OneCamera {
protected:
    /// The camera opened, the log and the clock empty.
    ConnectedCamera& open(const std::string& camera = olderExposure()) {
        useScenario(oneCamera(camera));
        _camera = std::make_unique<ConnectedCamera>(found());
        forget();
        return *_camera;
    }

    /// The values that the device was asked to take.
    Texts valuesSet() const { return callsOf("MediaDeviceControl.TrySetValue"); }

private:
    std::unique_ptr<ConnectedCamera> _camera;
};

TEST_F(ExposureSettingTest, MicrosecondsBecomeAnExponentThatIsSetAndReadBack) {
    EXPECT_EQ(open().setExposure(microseconds(50000), noDelay), microseconds(62500));
    EXPECT_EQ(news(), (Texts{"D: VideoDeviceController",
                             "D: MediaDeviceControl.Capabilities Exposure = {\"AutoModeSupported\":true,"
                             "\"Max\":0.0,\"Min\":-13.0,\"Step\":1.0,\"Supported\":true}",
                             "D: VideoDeviceController", "D: MediaDeviceControl.TrySetValue Exposure [-4.0] = true",
                             "D: VideoDeviceController", "D: MediaDeviceControl.TryGetValue Exposure = true"}));
    EXPECT_EQ(deviceLines(), (Texts{"INFO Requested exposure 50000 us., camera name: Cam",
                                    "INFO Try set to 2^[-4.000000] s, camera name: Cam",
                                    "INFO Exposure latched to: 62500us [-4.000000], camera name: Cam"}));
}

TEST_F(ExposureSettingTest, PercentBecomesStopsBelowTheLongestExposure) {
    EXPECT_EQ(open().setExposureAsPercent(25, noDelay), microseconds(250000));
    EXPECT_EQ(valuesSet(), (Texts{"[-2.0]"}));
    EXPECT_EQ(deviceLines(), (Texts{"INFO Requested exposure 25 %., camera name: Cam",
                                    "INFO Try set to 2^[-2.000000] s, camera name: Cam",
                                    "INFO Exposure latched to: 250000us [-2.000000], camera name: Cam"}));
}

TEST_F(ExposureSettingTest, PercentIsLoggedWithSixSignificantDigits) {
    ConnectedCamera& camera = open();
    camera.setExposureAsPercent(100.0 / 3.0, noDelay);
    EXPECT_EQ(deviceLines().front(), "INFO Requested exposure 33.3333 %., camera name: Cam");
    log().clear();
    camera.setExposureAsPercent(1000000, noDelay);
    EXPECT_EQ(deviceLines().front(), "INFO Requested exposure 1e+06 %., camera name: Cam");
}

TEST_F(ExposureSettingTest, PercentFrom0To200) {
    ConnectedCamera& camera = open();
    EXPECT_EQ(camera.setExposureAsPercent(0, noDelay), microseconds(122));
    EXPECT_EQ(camera.setExposureAsPercent(100, noDelay), microseconds(1000000));
    EXPECT_EQ(camera.setExposureAsPercent(1, noDelay), microseconds(7812));
    EXPECT_EQ(camera.setExposureAsPercent(200, noDelay), microseconds(1000000));
    EXPECT_EQ(valuesSet(), (Texts{"[-13.0]", "[0.0]", "[-7.0]", "[0.0]"}));
}

TEST_F(ExposureSettingTest, ATimeBeyondTheRangeEndsAtItsEnd) {
    ConnectedCamera& camera =
        open(R"({"exposure": {"supported": true, "min": -13, "max": -2, "step": 1, "value": -6}})");
    EXPECT_EQ(camera.setExposure(microseconds(10000000), noDelay), microseconds(250000));
    EXPECT_EQ(valuesSet(), (Texts{"[-2.0]"}));
}

TEST_F(ExposureSettingTest, AFinerGridIsReportedInWholeStops) {
    ConnectedCamera& camera =
        open(R"({"exposure": {"supported": true, "min": -10, "max": 0, "step": 0.5, "value": -6}})");
    EXPECT_EQ(camera.setExposure(microseconds(50000), noDelay), microseconds(31250));
    EXPECT_EQ(valuesSet(), (Texts{"[-4.5]"}));
    EXPECT_EQ(deviceLines().back(), "INFO Exposure latched to: 31250us [-4.500000], camera name: Cam");
}

TEST_F(ExposureSettingTest, ACoarserGridLatchesElsewhereAndThatIsReported) {
    EXPECT_EQ(open(olderExposure(R"("latch": -7)")).setExposure(microseconds(50000), noDelay), microseconds(7812));
    EXPECT_EQ(deviceLines().back(), "INFO Exposure latched to: 7812us [-7.000000], camera name: Cam");
}

TEST_F(ExposureSettingTest, TheSameExposureAgainIsNotSetEvenIfAnotherWasLatched) {
    ConnectedCamera& camera = open(olderExposure(R"("latch": -7)"));
    camera.setExposure(microseconds(50000), milliseconds(300));
    forget();
    EXPECT_EQ(camera.setExposure(microseconds(50000), milliseconds(300)), microseconds(62500));
    EXPECT_EQ(deviceLines(), (Texts{"INFO Requested exposure 50000 us., camera name: Cam", unchanged}));
    EXPECT_TRUE(clock().calls().empty());
    EXPECT_EQ(news().size(), 2u) << "only the range is read";
    EXPECT_EQ(valuesSet().size(), 1u);
}

TEST_F(ExposureSettingTest, TwoTimesOnTheSameGridPointCountAsUnchanged) {
    ConnectedCamera& camera = open();
    camera.setExposure(microseconds(50000), noDelay);
    camera.setExposure(microseconds(62500), noDelay);
    EXPECT_EQ(deviceLines().back(), unchanged);
    EXPECT_EQ(valuesSet().size(), 1u);
}

TEST_F(ExposureSettingTest, TimeAndPercentOnTheSameExponentCountAsUnchanged) {
    ConnectedCamera& camera = open();
    camera.setExposure(microseconds(250000), noDelay);
    EXPECT_EQ(camera.setExposureAsPercent(25, noDelay), microseconds(250000));
    EXPECT_EQ(deviceLines().back(), unchanged);
}

TEST_F(ExposureSettingTest, TheFirstRequestAlwaysGoesToTheDevice) {
    EXPECT_EQ(open().setExposureAsExponent(-6, noDelay), microseconds(15625));
    EXPECT_EQ(valuesSet(), (Texts{"[-6.0]"})) << "although the device stands there already";
    EXPECT_EQ(open().setExposureAsExponent(0, noDelay), microseconds(1000000));
    EXPECT_EQ(valuesSet(), (Texts{"[0.0]"}));
}

TEST_F(ExposureSettingTest, OnlyAValueThatNoControlProducesStandsForNoRequestYet) {
    EXPECT_EQ(open().setExposureAsExponent(std::numeric_limits<double>::min(), noDelay), microseconds(1000000));
    EXPECT_EQ(deviceLines(), (Texts{unchanged}));
    EXPECT_TRUE(news().empty());
}

TEST_F(ExposureSettingTest, GoingBackToAnEarlierExposureIsAChange) {
    ConnectedCamera& camera = open();
    for (const double exponent : {-4.0, -5.0, -4.0})
        camera.setExposureAsExponent(exponent, noDelay);
    EXPECT_EQ(valuesSet(), (Texts{"[-4.0]", "[-5.0]", "[-4.0]"}));
}

TEST_F(ExposureSettingTest, TheDelayPassesBetweenSettingAndReadingBack) {
    ConnectedCamera& camera = open();
    camera.setExposureAsExponent(-4, milliseconds(750));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(750)}));

    Halden::setClockForTesting(std::make_shared<FakeClock>(1)); // waits for real
    camera.setExposureAsExponent(-5, milliseconds(40));
    const auto lines = journal().lines();
    ASSERT_GE(lines.size(), 3u);
    const JournalLine& set = lines[lines.size() - 3];
    ASSERT_EQ(set.call, "MediaDeviceControl.TrySetValue");
    EXPECT_GE(lines.back().json["t"].asDouble() - set.json["t"].asDouble(), 0.039);
}

TEST_F(ExposureSettingTest, ADelayOfMinusOneIsTheLargestUnsigned32BitNumberOfMilliseconds) {
    open().setExposureAsExponent(-4, milliseconds(-1));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(4294967295)}));
}

TEST_F(ExposureSettingTest, ACameraWithoutTheControlCannotChangeItsExposure) {
    ConnectedCamera& camera = open("{}");
    EXPECT_EQ(camera.setExposure(microseconds(50000), noDelay), exposureUnset);
    EXPECT_EQ(camera.setExposureAsPercent(50, noDelay), exposureUnset);
    EXPECT_EQ(deviceLines(), (Texts{"INFO Requested exposure 50000 us., camera name: Cam",
                                    "ERROR Exposure changes not supported, camera name: Cam",
                                    "INFO Requested exposure 50 %., camera name: Cam",
                                    "ERROR Exposure changes not supported, camera name: Cam"}));
    EXPECT_TRUE(valuesSet().empty());
    EXPECT_TRUE(clock().calls().empty());
}

TEST_F(ExposureSettingTest, AControlWithoutAStepCannotChangeItsExposure) {
    ConnectedCamera& camera =
        open(R"({"exposure": {"supported": true, "min": -6, "max": -2, "step": 0, "value": -6}})");
    EXPECT_EQ(camera.setExposure(microseconds(50000), noDelay), exposureUnset);
    EXPECT_EQ(camera.setExposureAsPercent(50, noDelay), exposureUnset);
    EXPECT_EQ(linesOf("ERROR").size(), 0u) << "of the service";
    EXPECT_EQ(deviceLines().back(), "ERROR Exposure changes not supported, camera name: Cam");
    EXPECT_TRUE(valuesSet().empty());
}

TEST_F(ExposureSettingTest, ADeviceThatRefusesTheValueIsAskedAgainNextTime) {
    ConnectedCamera& camera = open(olderExposure(R"("refuse": ["TrySetValue"])"));
    EXPECT_EQ(camera.setExposureAsExponent(-4, milliseconds(100)), exposureUnset);
    EXPECT_EQ(camera.setExposureAsExponent(-4, milliseconds(100)), exposureUnset);
    EXPECT_EQ(
        deviceLines(),
        (Texts{"INFO Try set to 2^[-4.000000] s, camera name: Cam", "ERROR Failed to set exposure, camera name: Cam",
               "INFO Try set to 2^[-4.000000] s, camera name: Cam", "ERROR Failed to set exposure, camera name: Cam"}));
    EXPECT_TRUE(clock().calls().empty());
    EXPECT_EQ(timesCalled("MediaDeviceControl.TryGetValue"), 0u);
}

TEST_F(ExposureSettingTest, ARefusedValueLeavesTheOneBeforeInForce) {
    ConnectedCamera& camera = open();
    camera.setExposureAsExponent(-4, noDelay);
    EXPECT_EQ(camera.setExposureAsExponent(std::numeric_limits<double>::quiet_NaN(), noDelay), exposureUnset);
    EXPECT_EQ(camera.setExposureAsExponent(-4, noDelay), microseconds(62500));
    EXPECT_EQ(deviceLines().back(), unchanged);
}

TEST_F(ExposureSettingTest, AValueThatCannotBeReadBackIsUnsetWithoutALogAndYetRemembered) {
    ConnectedCamera& camera = open(olderExposure(R"("refuse": ["TryGetValue"])"));
    EXPECT_EQ(camera.setExposureAsExponent(-4, milliseconds(100)), exposureUnset);
    EXPECT_EQ(deviceLines(), (Texts{"INFO Try set to 2^[-4.000000] s, camera name: Cam"}));
    EXPECT_EQ(clock().sleeps(), (std::vector{milliseconds(100)}));
    EXPECT_EQ(camera.setExposureAsExponent(-4, milliseconds(100)), microseconds(62500));
    EXPECT_EQ(deviceLines().back(), unchanged);
}

TEST_F(ExposureSettingTest, ANegativeTimeIsNotANumberWhichTheDeviceRefuses) {
    ConnectedCamera& camera = open();
    EXPECT_EQ(camera.setExposure(microseconds(-5), noDelay), exposureUnset);
    EXPECT_EQ(deviceLines().front(), "INFO Requested exposure -5 us., camera name: Cam");
    EXPECT_EQ(valuesSet(), (Texts{"[\"nan\"]"}));
    EXPECT_EQ(deviceLines().back(), "ERROR Failed to set exposure, camera name: Cam");
}

/// A call of setting an exposure that fails once.
struct ExposureFault {
    const char* name;
    const char* operation;
    int after;
    std::size_t logged; ///< lines before the failure
    bool isRemembered;  ///< the device has taken the value
};

class ExposureFaultTest : public ExposureSettingTest, public testing::WithParamInterface<ExposureFault> {};

TEST_P(ExposureFaultTest, RaisesWithoutALogOfItsOwn) {
    const ExposureFault& step = GetParam();
    ConnectedCamera& camera = open(withFaults(
        olderExposure(), fault(step.operation, R"("after": )" + std::to_string(step.after) + R"(, "times": 1)")));
    EXPECT_EQ(errorOf([&] { camera.setExposure(microseconds(50000), noDelay); }).code(), -7);
    EXPECT_EQ(deviceLines().size(), step.logged);
    EXPECT_EQ(camera.setExposure(microseconds(50000), noDelay), microseconds(62500));
    EXPECT_EQ(deviceLines().back() == unchanged, step.isRemembered);
}

INSTANTIATE_TEST_SUITE_P(EachCall, ExposureFaultTest,
                         testing::Values(ExposureFault{"Range", "VideoDeviceController", 0, 1, false},
                                         ExposureFault{"Capabilities", "MediaDeviceControl.Capabilities", 0, 1, false},
                                         ExposureFault{"Set", "VideoDeviceController", 1, 2, false},
                                         ExposureFault{"ReadBack", "VideoDeviceController", 2, 2, true}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(ExposureSettingTest, ACameraThatIsGoneRaises) {
    ConnectedCamera& camera = open();
    unplug();
    EXPECT_LT(errorOf([&] { camera.setExposure(microseconds(50000), noDelay); }).code(), 0);
    EXPECT_LT(errorOf([&] { camera.setExposureAsPercent(50, noDelay); }).code(), 0);
    EXPECT_LT(errorOf([&] { camera.setExposureAsExponent(-4, noDelay); }).code(), 0);
}

TEST_F(ExposureSettingTest, TheRangeIsReadFromTheOlderControl) {
    useScenario(oneCamera(R"({"exposure": {"supported": true, "min": -11, "max": -1, "step": 0.25}})"));
    const ExposureRange range = getExposureRange(CameraHelper::CreateMediaCapture(found()));
    EXPECT_EQ(range.min, -11.0);
    EXPECT_EQ(range.step, 0.25);
    EXPECT_EQ(range.max, -1.0);
    EXPECT_EQ(range.minExposureInUs(), microseconds(488));
    EXPECT_EQ(range.maxExposureInUs(), microseconds(500000));
}

TEST_F(ExposureSettingTest, TheRangeOfACameraWithoutTheOlderControlIsTheDefaultRecord) {
    useScenario(
        oneCamera(R"({"exposure": {"min": -11, "max": -1, "step": 1}, "exposureControl": {"supported": true}})"));
    const ExposureRange range = getExposureRange(CameraHelper::CreateMediaCapture(found()));
    EXPECT_EQ(range.step, 0.0);
    EXPECT_EQ(range.min, -4.0);
    EXPECT_EQ(range.max, -4.0);
}

} // namespace
