#include "Platform/V4l2/Session/StreamKeeper.h"

#include "Platform/V4l2/Kernel/DeviceErrors.h"
#include "Tests/Platform/V4l2/FakeKernel/FakeDriver.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

namespace Platform::V4l2 {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::steady_clock;
using State = StreamKeeper::State;

/// A keeper on the fake driver. Its limits are hours, which pass where the test says so.
class StreamKeeperTest : public testing::Test {
protected:
    static constexpr const char* videoPath = "/dev/video0";
    static constexpr std::size_t bufferCount = 4;

    void pass(unsigned& frames) {
        keeper.passFrames([&](const Stream&, const Frame&) { ++frames; });
    }
    /// As an endpoint that stalls.
    void letStreamFail() {
        ASSERT_TRUE(driver->deliver(videoPath, {{}, V4L2_BUF_FLAG_ERROR, false, true, 0}));
        unsigned frames = 0;
        pass(frames);
        ASSERT_EQ(frames, 0U);
    }
    /// Lets the deadline pass, of a stream that frames are wanted from.
    void letDeadlinePass() { keeper.deadlinePassed(keeper.deadline(true).value(), true); }
    /// From now to the deadline, in whole hours.
    std::chrono::hours timeLeft() {
        return std::chrono::round<hours>(keeper.deadline(true).value() - steady_clock::now());
    }

    static std::shared_ptr<FakeDriver> driverOfOneCamera() {
        auto driver = std::make_shared<FakeDriver>();
        driver->plug(videoPath, usbCamera());
        return driver;
    }

    const std::shared_ptr<FakeDriver> driver = driverOfOneCamera();
    DeviceNode node{driver, videoPath};
    const NodeDescription description;
    StreamKeeper keeper{node, description, {hours(1), hours(12), hours(2), hours(5), hours(3)}};
};

TEST_F(StreamKeeperTest, AStreamRunsFromItsStartToItsStop) {
    EXPECT_EQ(keeper.state(), State::Stopped);
    const TimePoint before = steady_clock::now();
    EXPECT_GE(keeper.start(), before);
    EXPECT_EQ(keeper.state(), State::Running);
    EXPECT_TRUE(driver->isStreaming(videoPath));
    keeper.stop();
    EXPECT_EQ(keeper.state(), State::Stopped);
    EXPECT_FALSE(driver->isStreaming(videoPath));
    EXPECT_EQ(driver->mappings(), 0U);
}

TEST_F(StreamKeeperTest, AStartThatFailsLeavesTheStateAsItIs) {
    driver->failOn(VIDIOC_STREAMON, ENOSPC, 0, 1);
    EXPECT_NE(raisedBy([this] { keeper.start(); }), "nothing raised");
    EXPECT_EQ(keeper.state(), State::Stopped);
    keeper.start();
    letStreamFail();
    const auto due = keeper.deadline(false);
    driver->failOn(VIDIOC_STREAMON, ENOSPC, 0, 1);
    EXPECT_NE(raisedBy([this] { keeper.start(); }), "nothing raised");
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_EQ(keeper.deadline(false), due);
}

TEST_F(StreamKeeperTest, EachFrameIsShownOnceAndGivenBack) {
    keeper.start();
    for (int i = 0; i < 3; ++i)
        driver->deliver(videoPath);
    unsigned frames = 0;
    pass(frames);
    EXPECT_EQ(frames, 3U);
    EXPECT_EQ(driver->emptyBuffers(videoPath), bufferCount);
    pass(frames);
    EXPECT_EQ(frames, 3U);
}

TEST_F(StreamKeeperTest, AStreamThatFailsIsStoppedAndStartedAgainWhenItIsTime) {
    keeper.start();
    letStreamFail();
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_FALSE(driver->isStreaming(videoPath));
    EXPECT_EQ(timeLeft(), hours(2));
    const TimePoint due = keeper.deadline(false).value();
    EXPECT_EQ(keeper.deadlinePassed(due - minutes(1), false), std::nullopt);
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_NE(keeper.deadlinePassed(due, false), std::nullopt);
    EXPECT_EQ(keeper.state(), State::Running);
    EXPECT_TRUE(driver->isStreaming(videoPath));
}

TEST_F(StreamKeeperTest, ARestartThatFailsIsTriedAgainAfterTheSameTime) {
    keeper.start();
    letStreamFail();
    driver->failOn(VIDIOC_REQBUFS, ENOMEM, 0, 1);
    EXPECT_EQ(keeper.deadlinePassed(keeper.deadline(false).value(), false), std::nullopt);
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_EQ(timeLeft(), hours(2));
    letDeadlinePass();
    EXPECT_EQ(keeper.state(), State::Running);
}

TEST_F(StreamKeeperTest, AStreamThatCouldNotBeStartedCanBeTriedAgainAtOnce) {
    keeper.restartSoon();
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_NE(keeper.deadlinePassed(steady_clock::now(), false), std::nullopt);
    EXPECT_EQ(keeper.state(), State::Running);
}

TEST_F(StreamKeeperTest, AStreamThatIsToRestartSoonHasEnded) {
    keeper.start();
    keeper.restartSoon();
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
    EXPECT_FALSE(driver->isStreaming(videoPath));
    EXPECT_EQ(driver->mappings(), 0U);
    EXPECT_NE(keeper.deadlinePassed(steady_clock::now(), false), std::nullopt);
    EXPECT_EQ(keeper.state(), State::Running);
}

TEST_F(StreamKeeperTest, AStreamThatIsStoppedIsNotStartedAgain) {
    keeper.start();
    letStreamFail();
    keeper.stop();
    EXPECT_EQ(keeper.deadline(true), std::nullopt);
    EXPECT_EQ(keeper.deadlinePassed(steady_clock::now() + hours(100), true), std::nullopt);
    EXPECT_FALSE(driver->isStreaming(videoPath));
}

TEST_F(StreamKeeperTest, TheFailureOfAVisitorEndsTheStreamForNow) {
    keeper.start();
    driver->deliver(videoPath);
    keeper.passFrames([](const Stream&, const Frame&) { throw closedError("look", videoPath); });
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
}

TEST_F(StreamKeeperTest, AStreamMayBeSilentWhileNoFrameIsWanted) {
    keeper.start();
    EXPECT_EQ(keeper.deadline(false), std::nullopt);
    EXPECT_EQ(keeper.deadlinePassed(steady_clock::now() + hours(100), false), std::nullopt);
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 1U);
}

TEST_F(StreamKeeperTest, ASilentStreamIsStartedAnewWithTwiceThePatienceEachTimeUpToTheLimitOfAStill) {
    keeper.start();
    EXPECT_EQ(timeLeft(), hours(5));
    letDeadlinePass();
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 2U);
    EXPECT_EQ(timeLeft(), hours(10));
    letDeadlinePass();
    EXPECT_EQ(timeLeft(), hours(12));
    letDeadlinePass();
    EXPECT_EQ(timeLeft(), hours(12));
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 4U);
    keeper.renewPatience();
    EXPECT_EQ(timeLeft(), hours(5));
}

TEST_F(StreamKeeperTest, TheLessFarApartTheFramesAreTheLessPatienceThereIsWithinLimits) {
    keeper.start();
    const std::map<int, int> patienceOf{{1, 3}, {45, 3}, {60, 4}, {75, 5}, {100, 5}}; // hours, of minutes
    for (const auto& [interval, patience] : patienceOf) {
        keeper.renewPatience(minutes(interval));
        EXPECT_EQ(timeLeft(), hours(patience)) << interval;
    }
}

TEST_F(StreamKeeperTest, AStreamThatIsStartedAnewOrThatASettingMaySlowDownIsGivenTheWholeTime) {
    keeper.start();
    keeper.renewPatience(minutes(1));
    letDeadlinePass();
    EXPECT_EQ(timeLeft(), hours(6));
    keeper.renewPatience(minutes(1));
    keeper.forgetInterval();
    EXPECT_EQ(timeLeft(), hours(5));
    letDeadlinePass();
    keeper.forgetInterval();
    EXPECT_EQ(timeLeft(), hours(10));
    letStreamFail();
    keeper.renewPatience(minutes(1)); // of the stream that failed
    letDeadlinePass();
    EXPECT_EQ(timeLeft(), hours(5));
}

TEST_F(StreamKeeperTest, TheSilenceBeginsWithTheLatestFrameOrWithTheWishForOne) {
    keeper.start();
    const auto sinceStart = keeper.deadline(true);
    driver->deliver(videoPath);
    unsigned frames = 0;
    pass(frames);
    const auto sinceFrame = keeper.deadline(true);
    EXPECT_GT(sinceFrame, sinceStart);
    keeper.expectFrames();
    EXPECT_GT(keeper.deadline(true), sinceFrame);
}

TEST_F(StreamKeeperTest, ADescriptorThatFailsEndsTheStream) {
    keeper.start();
    keeper.descriptorReady(true, [](const Stream&, const Frame&) {});
    EXPECT_EQ(keeper.state(), State::WaitingToRestart);
}

TEST_F(StreamKeeperTest, BetweenTwoAttemptsTheDescriptorIsListenedToUntilItHasComplainedOnce) {
    const auto ignore = [](const Stream&, const Frame&) {};
    EXPECT_EQ(keeper.descriptor(), -1);
    keeper.start();
    EXPECT_EQ(keeper.descriptor(), node.descriptor());
    for (unsigned complaints = 1; complaints <= 2; ++complaints) {
        letStreamFail();
        EXPECT_EQ(keeper.descriptor(), node.descriptor());
        keeper.descriptorReady(true, ignore);
        EXPECT_EQ(keeper.descriptor(), -1);
        EXPECT_EQ(driver->calls(VIDIOC_QUERYCAP), complaints);
        letDeadlinePass();
        EXPECT_EQ(keeper.descriptor(), node.descriptor());
    }
    EXPECT_FALSE(node.isGone());
    letStreamFail();
    driver->unplug(videoPath);
    keeper.descriptorReady(true, ignore);
    EXPECT_TRUE(node.isGone());
}

} // namespace
} // namespace Platform::V4l2
