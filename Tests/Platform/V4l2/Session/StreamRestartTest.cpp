#include "Tests/Platform/V4l2/CameraFixture.h"
#include "Tests/Support/WaitUntil.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

namespace Platform::V4l2 {
namespace {

/// A camera whose stream runs for a reader; no frame comes before a FrameClock sends them.
class StreamRestartTest : public CameraFixture {
protected:
    static constexpr std::uint32_t smallFormat = 1; // of the formats of usbCamera
    static constexpr std::uint32_t largeFormat = 3;

    void start() {
        capture = open();
        setFormat(capture, smallFormat);
        reader = startReader(capture);
    }
    void askForStill() { asked = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream); }
    /// With the frames that come from now on.
    void expectStill() {
        const FrameClock clock(*driver, videoPath);
        blockingWait(*asked);
        EXPECT_GT(stream->Size(), 0u);
    }
    /// As an endpoint that stalls.
    bool deliverEmptyBuffer() { return driver->deliver(videoPath, {{}, V4L2_BUF_FLAG_ERROR, false, true, 0}); }
    bool startsOnceMore() {
        return waitUntil([this] { return driver->calls(VIDIOC_STREAMON) == 2; });
    }

    MediaCapture capture;
    MediaFrameReader reader;
    const std::shared_ptr<InMemoryRandomAccessStream> stream = std::make_shared<InMemoryRandomAccessStream>();
    std::optional<IAsyncAction> asked;
};

TEST_F(StreamRestartTest, AStreamThatFailsIsStartedAgainUnderAWaitingStill) {
    start();
    driver->failOn(VIDIOC_DQBUF, EIO, 0, 3);
    driver->failOn(VIDIOC_STREAMON, EIO, 0, 2);
    askForStill();
    expectStill();
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
}

TEST_F(StreamRestartTest, AStreamThatAnEmptyBufferEndsIsStartedAgain) {
    start();
    askForStill();
    ASSERT_TRUE(deliverEmptyBuffer());
    EXPECT_TRUE(startsOnceMore());
    expectStill();
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 2u);
}

TEST_F(StreamRestartTest, AStreamThatFailedWhileNobodyLookedIsStartedAgainAtTheNextRequestAtOnce) {
    limits.restart = std::chrono::minutes(1);
    platform = createV4l2Platform(driver, lister, limits);
    start();
    askForStill();
    const std::size_t buffers = driver->buffers(videoPath);
    const auto isTaken = [&] {
        return asked->Status() != AsyncStatus::Started || driver->emptyBuffers(videoPath) == buffers;
    };
    while (asked->Status() == AsyncStatus::Started) { // frame by frame, so that buffers stay empty
        driver->deliver(videoPath);
        ASSERT_TRUE(waitUntil(isTaken));
    }
    ASSERT_TRUE(waitUntil([this] { return !driver->isAwaited(videoPath); })); // the still has been told that it is over
    ASSERT_TRUE(deliverEmptyBuffer());
    askForStill();
    expectStill();
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 2u);
}

TEST_F(StreamRestartTest, AStreamWhoseFramesCameFastIsGivenLittleTimeForTheNextOne) {
    limits.silence = 2 * patience;
    limits.still = 4 * patience;
    limits.shortSilence = std::chrono::milliseconds(50);
    platform = createV4l2Platform(driver, lister, limits);
    start();
    {
        const FrameClock clock(*driver, videoPath);
        ASSERT_TRUE(still(capture));
        ASSERT_TRUE(waitUntil([this] { return driver->emptyBuffers(videoPath) == 0; })); // nobody takes them
    }
    askForStill(); // the endpoint has stalled meanwhile, which nothing tells
    EXPECT_TRUE(startsOnceMore());
    expectStill();
}

TEST_F(StreamRestartTest, AStreamThatFallsSilentIsStartedAgainUnderAWaitingStill) {
    start();
    askForStill();
    EXPECT_TRUE(startsOnceMore());
    expectStill();
}

TEST_F(StreamRestartTest, AStreamThatBeginsSlowlyIsGivenTheTime) {
    start();
    askForStill();
    ASSERT_TRUE(startsOnceMore());
    std::this_thread::sleep_for(limits.silence * 5 / 4); // the first stream has been given less than that
    expectStill();
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 2u);
}

TEST_F(StreamRestartTest, AStreamMayBeSilentWhileNobodyWaitsForAFrame) {
    start();
    {
        const FrameClock clock(*driver, videoPath);
        ASSERT_TRUE(still(capture));
    }
    std::this_thread::sleep_for(limits.silence + std::chrono::milliseconds(200));
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 1u);
    const FrameClock clock(*driver, videoPath);
    ASSERT_TRUE(still(capture));
    EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 1u);
}

TEST_F(StreamRestartTest, AStreamThatDoesNotStartInANewFormatIsTriedAgain) {
    start();
    driver->failOn(VIDIOC_STREAMON, ENOSPC, 0, 3);
    EXPECT_EQ(raisedBy([&] { setFormat(capture, largeFormat); }).substr(0, 31), "80004005 VIDIOC_STREAMON on /de");
    EXPECT_TRUE(waitUntil([this] { return driver->isStreaming(videoPath); }));
}

TEST_F(StreamRestartTest, AReaderThatDoesNotStartLeavesAWaitingStillItsNextAttempt) {
    limits.restart = std::chrono::milliseconds(100);
    platform = createV4l2Platform(driver, lister, limits);
    capture = open();
    setFormat(capture, smallFormat);
    reader = blockingWait(capture->CreateFrameReaderAsync(sourceOf(capture)));
    askForStill();
    driver->failOn(VIDIOC_STREAMON, ENOSPC, 0, 1);
    ASSERT_TRUE(deliverEmptyBuffer());
    ASSERT_TRUE(waitUntil([this] { return !driver->isStreaming(videoPath); }));
    EXPECT_EQ(raisedBy([&] { blockingWait(reader->StartAsync()); }).substr(0, 31), "80004005 VIDIOC_STREAMON on /de");
    expectStill();
}

} // namespace
} // namespace Platform::V4l2
