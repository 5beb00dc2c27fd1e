#include "Services/CameraHubWeb/Api/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace CameraHubWeb {
namespace {

using std::chrono::microseconds;
using testing::ElementsAre;
using testing::IsEmpty;

CameraHub::Camera camera() {
    CameraHub::Camera camera;
    camera.uid = "desk";
    camera.make = "Maker";
    camera.model = "Model";
    camera.resolution = {1280, 720};
    camera.shortestExposure = microseconds(122);
    camera.longestExposure = microseconds(1'000'000);
    return camera;
}

TEST(JsonTest, WholeStopsArePowersOfTwoBetweenTheEnds) {
    CameraHub::Camera narrow = camera();
    narrow.shortestExposure = microseconds(110'000);
    EXPECT_THAT(wholeStops(narrow), ElementsAre(microseconds(125'000), microseconds(250'000), microseconds(500'000),
                                                microseconds(1'000'000)));
    EXPECT_EQ(wholeStops(camera()).front(), microseconds(122));
    EXPECT_EQ(wholeStops(camera()).size(), 14U);
}

TEST(JsonTest, AFixedExposureHasNoStops) {
    CameraHub::Camera fixed = camera();
    fixed.shortestExposure = fixed.longestExposure;
    EXPECT_THAT(wholeStops(fixed), IsEmpty());
    EXPECT_EQ(cameraAsJson(fixed)["exposureRange"].asString(), "fixed");
}

TEST(JsonTest, ACamerasNameIsMakeAndModelOrItsUid) {
    EXPECT_EQ(cameraAsJson(camera())["name"].asString(), "Maker Model");
    CameraHub::Camera nameless = camera();
    nameless.make = nameless.model = "";
    EXPECT_EQ(cameraAsJson(nameless)["name"].asString(), "desk");
}

TEST(JsonTest, ControlCharactersOfNamesDoNotReachPeople) {
    CameraHub::Camera odd = camera();
    odd.make = "\x1b[31mred";
    EXPECT_EQ(cameraAsJson(odd)["make"].asString(), "\xEF\xBF\xBD[31mred");
}

TEST(JsonTest, AnExposureThatIsNotKnownIsNull) {
    KeptStill still;
    still.png = std::make_shared<const std::vector<std::uint8_t>>();
    still.asked = 40;
    EXPECT_TRUE(stillAsJson(still)["exposureUs"].isNull());
    EXPECT_TRUE(stillAsJson(still)["exposureText"].isNull());
    EXPECT_EQ(jsonText(stillAsJson(still)["asked"]), R"({"percent":40})");
}

TEST(JsonTest, AnEntryOfTheQueueTellsWhatIsBeingDone) {
    const auto now = std::chrono::steady_clock::now();
    const Json::Value queue =
        queueAsJson({{"mine", "desk", 0, TakeStep::Opening, now}, {"", "desk", 1, TakeStep::Waiting, now}});
    EXPECT_EQ(queue[0]["ticket"].asString(), "mine");
    EXPECT_EQ(queue[0]["state"].asString(), "opening");
    EXPECT_TRUE(queue[1]["ticket"].isNull());
    EXPECT_EQ(queue[1]["place"].asInt(), 1);
    EXPECT_EQ(queue[1]["state"].asString(), "waiting");
}

} // namespace
} // namespace CameraHubWeb
