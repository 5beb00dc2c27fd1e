#include "Tools/Text/StillFileName.h"

#include <gtest/gtest.h>

using namespace CommandLine;
using namespace std::chrono_literals;

namespace {

const std::chrono::system_clock::time_point moment = std::chrono::system_clock::time_point(1795352002s) + 123999us;

CameraHub::Camera named(const std::string& make, const std::string& model) {
    CameraHub::Camera camera;
    camera.uid = "/dev/video0";
    camera.make = make;
    camera.model = model;
    return camera;
}

} // namespace

TEST(StillFileNameTest, IsMadeOfCameraAndUtcTime) {
    EXPECT_EQ(stillFileName(named("Halden", "Desk Camera"), moment), "Halden-Desk-Camera_2026-11-22T12-53-22.123Z");
}

TEST(StillFileNameTest, OfACameraWithoutANameHasItsUid) {
    EXPECT_EQ(stillFileName(named("", ""), moment), "dev-video0_2026-11-22T12-53-22.123Z");
}

TEST(StillFileNameTest, HasNothingThatMeansSomethingElsewhere) {
    EXPECT_EQ(stillFileName(named("", "../.. a*'$\nb_c "), moment), "a-b-c_2026-11-22T12-53-22.123Z");
    EXPECT_EQ(stillFileName(named("", "-rf"), moment), "rf_2026-11-22T12-53-22.123Z");
    EXPECT_EQ(stillFileName(named("", "Ger\u00e4t"), moment), "Ger\u00e4t_2026-11-22T12-53-22.123Z");
    EXPECT_EQ(stillFileName(named("", "/"), moment), "camera_2026-11-22T12-53-22.123Z");
}

TEST(StillFileNameTest, StaysBelowWhatFileSystemsAllow) {
    EXPECT_LT(stillFileName(named("", std::string(1000, 'x')), moment).size(), 100U);
}

TEST(StillFileNameTest, SortsByTime) {
    EXPECT_LT(stillFileName(named("", "a"), moment), stillFileName(named("", "a"), moment + 1ms));
    EXPECT_LT(stillFileName(named("", "a"), moment), stillFileName(named("", "a"), moment + 10s));
}
