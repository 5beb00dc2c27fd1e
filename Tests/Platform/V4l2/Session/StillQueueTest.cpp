#include "Platform/V4l2/Session/StillQueue.h"

#include <gtest/gtest.h>

namespace Platform::V4l2 {
namespace {

using std::chrono::milliseconds;

TimePoint at(int ms) { return TimePoint{} + milliseconds(ms); }

StillRequest askedAt(int ms) { return {{}, nullptr, at(ms)}; }

std::vector<TimePoint> momentsOf(const std::vector<StillRequest>& requests) {
    std::vector<TimePoint> moments;
    moments.reserve(requests.size());
    for (const StillRequest& request : requests)
        moments.push_back(request.asked);
    return moments;
}

/// The camera delivers a frame each 10 ms. One is passed over after a request, two after a setting.
class StillQueueTest : public testing::Test {
protected:
    StillQueueTest() { countFrames(5, 95); } // the stream has been running for a while

    /// The frames that begin within that time.
    void countFrames(int fromMs, int toMs) {
        for (int ms = fromMs; ms < toMs; ms += 10)
            stills.count({at(ms), false, at(ms + 1), number++});
    }

    std::uint32_t number = 0;

    StillQueue stills{{1, 2}, milliseconds(1000)};
};

TEST_F(StillQueueTest, AStillTakesTheFirstFrameThatIsLateEnoughAfterItsRequest) {
    stills.add(askedAt(100));
    countFrames(95, 115); // the first of them began before the request
    EXPECT_FALSE(stills.hasFresh());
    EXPECT_TRUE(stills.takeFresh().empty());
    countFrames(115, 125);
    EXPECT_TRUE(stills.hasFresh());
    EXPECT_EQ(momentsOf(stills.takeFresh()), std::vector{at(100)});
    EXPECT_FALSE(stills.hasFresh());
    EXPECT_FALSE(stills.isWaiting());
}

TEST_F(StillQueueTest, AStillWaitsForASettingThatWasChangedAfterItsRequest) {
    stills.add(askedAt(100));
    stills.settingChanged(at(110));
    countFrames(105, 135);
    EXPECT_FALSE(stills.hasFresh());
    countFrames(135, 145);
    EXPECT_TRUE(stills.hasFresh());
}

TEST_F(StillQueueTest, ASettingThatIsInForceEarlierDoesNotShortenTheWaitForAnother) {
    stills.settingChanged(at(600)); // a lens that moves for half a second
    stills.settingChanged(at(110));
    stills.add(askedAt(120));
    countFrames(125, 605);
    EXPECT_FALSE(stills.hasFresh());
    countFrames(605, 635);
    EXPECT_TRUE(stills.hasFresh());
}

TEST_F(StillQueueTest, ASettingThatIsInForceBeforeTheLatestStartsNoNewCount) {
    stills.settingChanged(at(100));
    countFrames(105, 135);
    ASSERT_FALSE(stills.wantsFrames());
    stills.settingChanged(at(90));
    EXPECT_FALSE(stills.wantsFrames());
}

TEST_F(StillQueueTest, TheIntervalIsThatOfFramesWithTheSettingInForce) {
    EXPECT_EQ(stills.longestInterval(), milliseconds(10));
    stills.settingChanged(at(110));
    countFrames(115, 145);
    EXPECT_EQ(stills.longestInterval(), std::nullopt);
    countFrames(165, 175);
    EXPECT_EQ(stills.longestInterval(), milliseconds(30));
}

TEST_F(StillQueueTest, OneFrameServesAllStillsThatItIsFreshForInTheirOrder) {
    stills.add(askedAt(101));
    stills.add(askedAt(102));
    stills.add(askedAt(118));
    countFrames(105, 125);
    EXPECT_EQ(momentsOf(stills.takeFresh()), (std::vector{at(101), at(102)}));
    EXPECT_TRUE(stills.isWaiting());
    countFrames(125, 145);
    EXPECT_EQ(momentsOf(stills.takeFresh()), std::vector{at(118)});
}

TEST_F(StillQueueTest, AStillWhoseFrameWasOfNoUseTakesTheVeryNextOne) {
    stills.add(askedAt(100));
    countFrames(105, 125);
    const auto taken = stills.takeFresh();
    ASSERT_EQ(taken.size(), 1U);
    stills.addAgain(taken.front());
    countFrames(125, 135);
    EXPECT_EQ(momentsOf(stills.takeFresh()), std::vector{at(100)});
}

TEST_F(StillQueueTest, AStillWhoseFrameWasOfNoUseWaitsForASettingThatWasChangedMeanwhile) {
    stills.add(askedAt(100));
    countFrames(105, 125);
    const auto taken = stills.takeFresh();
    ASSERT_EQ(taken.size(), 1U);
    stills.settingChanged(at(125));
    stills.addAgain(taken.front());
    countFrames(126, 146);
    EXPECT_FALSE(stills.hasFresh());
    countFrames(146, 156);
    EXPECT_TRUE(stills.hasFresh());
}

TEST_F(StillQueueTest, AStillIsUnderWayUntilItsFrameHasBecomeOne) {
    EXPECT_TRUE(stills.isEmpty());
    stills.add(askedAt(100));
    EXPECT_FALSE(stills.isEmpty());
    countFrames(105, 125);
    stills.takeFresh();
    EXPECT_FALSE(stills.isWaiting());
    EXPECT_FALSE(stills.isEmpty());
    stills.ended();
    EXPECT_TRUE(stills.isEmpty());
}

TEST_F(StillQueueTest, FramesAreWantedUntilASettingIsInForceAndWhileAStillWaits) {
    stills.settingChanged(at(100));
    countFrames(105, 125);
    EXPECT_TRUE(stills.wantsFrames());
    countFrames(125, 135);
    EXPECT_FALSE(stills.wantsFrames());
    stills.add(askedAt(140));
    EXPECT_TRUE(stills.wantsFrames());
    countFrames(145, 165);
    stills.takeFresh();
    EXPECT_FALSE(stills.wantsFrames());
}

TEST_F(StillQueueTest, TheDeadlineIsThatOfTheStillThatWasAskedForFirst) {
    EXPECT_EQ(stills.deadline(), std::nullopt);
    stills.add(askedAt(200));
    stills.add(askedAt(100));
    EXPECT_EQ(stills.deadline(), at(1100));
}

TEST_F(StillQueueTest, AStillIsOverdueAtItsLimitAndNoSooner) {
    stills.add(askedAt(100));
    stills.add(askedAt(200));
    EXPECT_TRUE(stills.takeOverdue(at(1099)).empty());
    EXPECT_EQ(momentsOf(stills.takeOverdue(at(1100))), std::vector{at(100)});
    EXPECT_EQ(stills.deadline(), at(1200));
    EXPECT_EQ(momentsOf(stills.takeOverdue(at(5000))), std::vector{at(200)});
    EXPECT_TRUE(stills.isEmpty());
}

TEST_F(StillQueueTest, AllThatWaitCanBeTakenWhetherTheyAreFreshOrNot) {
    stills.add(askedAt(100));
    countFrames(105, 125);
    stills.add(askedAt(130));
    EXPECT_EQ(momentsOf(stills.takeAll()), (std::vector{at(100), at(130)}));
    EXPECT_TRUE(stills.isEmpty());
}

} // namespace
} // namespace Platform::V4l2
