#include "Tools/CameraHub/Commands/BracketCommand.h"

#include <gmock/gmock.h>

using namespace CommandLine;
using namespace std::chrono_literals;
using std::chrono::microseconds;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

CameraHub::Camera camera(microseconds shortest, microseconds longest) {
    CameraHub::Camera made;
    made.shortestExposure = shortest;
    made.longestExposure = longest;
    return made;
}

const CameraHub::Camera usual = camera(122us, 1s);

} // namespace

TEST(BracketCommandTest, StopsDoubleFromTheFirst) {
    EXPECT_THAT(stops(1ms, 8ms, usual), ElementsAre(1ms, 2ms, 4ms, 8ms));
    EXPECT_THAT(stops(1ms, 1ms, usual), ElementsAre(1ms));
}

TEST(BracketCommandTest, TheLastIsTheOneNearestToTheEndInStops) {
    EXPECT_THAT(stops(125ms, 495ms, usual), ElementsAre(125ms, 250ms, 500ms));
    EXPECT_THAT(stops(125ms, 354ms, usual), ElementsAre(125ms, 250ms, 500ms));
    EXPECT_THAT(stops(125ms, 353ms, usual), ElementsAre(125ms, 250ms));
}

TEST(BracketCommandTest, StopsThatTheCameraDoesNotHaveAreLeftOut) {
    EXPECT_THAT(stops(10us, 1ms, usual), ElementsAre(160us, 320us, 640us, 1280us));
    EXPECT_THAT(stops(500ms, 30s, usual), ElementsAre(500ms, 1s));
    EXPECT_THAT(stops(2s, 4s, usual), IsEmpty());
    EXPECT_THAT(stops(1us, 10us, usual), IsEmpty());
}

TEST(BracketCommandTest, NoStopIsBeyondWhatTheHubTakes) {
    EXPECT_THAT(stops(1500s, 2147s, camera(1s, 10000s)), ElementsAre(1500s));
}
