#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Support/WaitUntil.h"

using namespace Platform;

TEST_P(PlatformContract, AFrameReaderNeedsASourceOfItsCapture) {
    const MediaCapture capture = open();
    const MediaCapture other = open();
    const MediaFrameSource foreign = firstSource(other);
    for (const MediaFrameSource& source : {MediaFrameSource(), foreign})
        EXPECT_EQ(codeRaisedBy([&] { blockingWait(capture->CreateFrameReaderAsync(source)); }),
                  winrt::result::invalidArgument);
}

TEST_P(PlatformContract, TheStreamRunsWhileAReaderDoes) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = createReader(capture);
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    for (int i = 0; i < 3; ++i) {
        blockingWait(reader->StartAsync());
        EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
        blockingWait(reader->StopAsync());
        EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    }
}

TEST_P(PlatformContract, ReadersOfASourceShareItsStream) {
    const MediaCapture capture = open();
    const MediaFrameReader first = startReader(capture);
    const MediaFrameReader second = startReader(capture);
    blockingWait(first->StopAsync());
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
    blockingWait(second->StopAsync());
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
}

TEST_P(PlatformContract, ReleasingTheReaderEndsTheStream) {
    const MediaCapture capture = open();
    startReader(capture).reset();
    // The operation that started it may still hold the stream for a moment.
    EXPECT_TRUE(waitUntil([&] { return capture->CameraStreamState() == CameraStreamState::NotStreaming; }));
}

TEST_P(PlatformContract, StartingAndStoppingTwiceChangesNothing) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    EXPECT_EQ(blockingWait(reader->StartAsync()), MediaFrameReaderStartStatus::Success);
    blockingWait(reader->StopAsync());
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    EXPECT_NO_THROW(blockingWait(reader->StopAsync()));
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
}

TEST_P(PlatformContract, AReaderThatNeverRanCanBeStopped) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = createReader(capture);
    EXPECT_NO_THROW(blockingWait(reader->StopAsync()));
}

TEST_P(PlatformContract, TheAcquisitionModeMayBeSetBeforeAndAfterTheStart) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = createReader(capture);
    EXPECT_NO_THROW(reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Buffered));
    blockingWait(reader->StartAsync());
    EXPECT_NO_THROW(reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime));
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
}

TEST_P(PlatformContract, AStreamThatRunsGoesOnInTheNewFormat) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    const MediaFrameSource source = firstSource(capture);
    for (const MediaFrameFormat& format : source->SupportedFormats()) {
        blockingWait(source->SetFormatAsync(format));
        EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
    }
}
