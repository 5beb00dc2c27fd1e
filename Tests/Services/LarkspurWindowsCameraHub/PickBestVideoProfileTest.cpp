#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Tests/Services/LarkspurWindowsCameraHub/FakeSourceInfo.h"
#include "Tests/Support/LogRecorder.h"

#include <gtest/gtest.h>

namespace {

using CameraHelper::PickBestVideoProfile;

std::int32_t bestOf(FakeSourceInfo::Profiles profiles, double minimumFrameRate = 0.0) {
    return PickBestVideoProfile(FakeSourceInfo::withProfiles(std::move(profiles)), minimumFrameRate);
}

std::string lineFor(double frameRate) {
    LogRecorder log("LarkspurWindowsCameraHub.Service");
    printMediaDesc({1920, 1080, frameRate, u"NV12"});
    const auto messages = log.messages();
    return messages.size() == 1 ? messages.front() : "not one line";
}

TEST(PickBestVideoProfileTest, TheLargestPictureWithTheHighestRateAndOfEqualOnesTheLast) {
    EXPECT_EQ(
        bestOf(
            {{640, 480, 30, u"NV12"}, {1920, 1080, 15, u"NV12"}, {1920, 1080, 30, u"NV12"}, {1920, 1080, 30, u"YUY2"}}),
        3);
}

TEST(PickBestVideoProfileTest, AreaWinsOverFrameRate) {
    EXPECT_EQ(bestOf({{1920, 1080, 30, u"NV12"}, {1280, 720, 60, u"NV12"}}), 0);
}

TEST(PickBestVideoProfileTest, ALowerFrameRateDoesNotDisplaceATie) {
    EXPECT_EQ(bestOf({{1280, 720, 30, u"NV12"}, {1280, 720, 15, u"NV12"}}), 0);
}

TEST(PickBestVideoProfileTest, AnImprovementHasToExceedTheMinimumFrameRate) {
    EXPECT_EQ(bestOf({{1920, 1080, 15, u"NV12"}, {1280, 720, 30, u"NV12"}}, 20.0), 1);
    EXPECT_EQ(bestOf({{1280, 720, 30, u"NV12"}, {1920, 1080, 20, u"NV12"}}, 20.0), 0);
}

TEST(PickBestVideoProfileTest, ATieNeedsNoMinimumFrameRate) {
    EXPECT_EQ(bestOf({{1280, 720, 30, u"NV12"}, {0, 0, 60, u"NV12"}}, 100.0), 1);
}

TEST(PickBestVideoProfileTest, AFrameRateOfZeroIsNoImprovement) {
    EXPECT_EQ(bestOf({{1920, 1080, 0.0, u"NV12"}, {640, 480, 30, u"NV12"}}), 1);
}

TEST(PickBestVideoProfileTest, AnAreaIsComparedAsASigned32BitNumber) {
    EXPECT_EQ(bestOf({{640, 480, 30, u"NV12"}, {65536, 32768, 30, u"NV12"}}), 0);
}

TEST(PickBestVideoProfileTest, WithoutProfilesItRaises) {
    EXPECT_THROW(bestOf({}), winrt::hresult_out_of_bounds);
    EXPECT_THROW(bestOf({{1920, 1080, 15, u"NV12"}}, 20.0), winrt::hresult_out_of_bounds);
}

TEST(PickBestVideoProfileTest, ASourceWithoutTheSecondInterfaceRaises) {
    try {
        PickBestVideoProfile(FakeSourceInfo::withoutSecondInterface(), 0.0);
        FAIL() << "nothing was raised";
    } catch (const winrt::hresult_error& error) {
        EXPECT_EQ(error.code(), winrt::result::noInterface);
    }
}

TEST(PickBestVideoProfileTest, TheChosenProfileIsLogged) {
    LogRecorder log("LarkspurWindowsCameraHub.Service");
    bestOf({{640, 480, 30, u"NV12"}, {1920, 1080, 29.97, u"MJPG"}});
    const std::string logger = "LarkspurWindowsCameraHub.Service";
    ASSERT_EQ(log.records().size(), 2u);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"   Best Format:", "MJPG: 1920x1080 @ 29.97 fps"}));
    EXPECT_TRUE(log.contains("DEBUG", logger, "   Best Format:"));
    EXPECT_TRUE(log.contains("DEBUG", logger, "MJPG: 1920x1080 @ 29.97 fps"));
}

TEST(PrintMediaDescTest, TheHundredthsOfTheFrameRateHaveNoLeadingZero) {
    EXPECT_EQ(lineFor(29.97), "NV12: 1920x1080 @ 29.97 fps");
    EXPECT_EQ(lineFor(30), "NV12: 1920x1080 @ 30.0 fps");
    EXPECT_EQ(lineFor(30.05), "NV12: 1920x1080 @ 30.5 fps");
    EXPECT_EQ(lineFor(7.5), "NV12: 1920x1080 @ 7.50 fps");
}

} // namespace
