#include "Tests/Platform/Interface/PlatformContract.h"

#include <array>
#include <cstdint>
#include <future>
#include <memory>
#include <utility>

using namespace Platform;

TEST_P(PlatformContract, AStillIsAPng) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    const auto stream = newStream();
    blockingWait(takeStill(capture, stream));
    EXPECT_TRUE(isPng(stream));
}

TEST_P(PlatformContract, AStillNeedsNoReader) {
    const MediaCapture capture = open();
    const auto stream = newStream();
    blockingWait(takeStill(capture, stream));
    EXPECT_TRUE(isPng(stream));
}

TEST_P(PlatformContract, StillsMayFollowEachOther) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    for (int i = 0; i < 3; ++i) {
        const auto stream = newStream();
        blockingWait(takeStill(capture, stream));
        EXPECT_TRUE(isPng(stream));
    }
}

TEST_P(PlatformContract, SeveralStillsMayBeUnderWay) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    std::vector<std::pair<IAsyncAction, RandomAccessStream>> stills;
    for (int i = 0; i < 3; ++i) {
        const auto stream = newStream();
        stills.emplace_back(takeStill(capture, stream), stream);
    }
    for (const auto& [still, stream] : stills) {
        blockingWait(still);
        EXPECT_TRUE(isPng(stream));
    }
}

TEST_P(PlatformContract, AStillHasTheSizeOfTheFormatInForce) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const MediaFrameReader reader = startReader(capture);
    for (const MediaFrameFormat& format : source->SupportedFormats()) {
        blockingWait(source->SetFormatAsync(format));
        const auto stream = newStream();
        blockingWait(takeStill(capture, stream));
        EXPECT_EQ(pngSize(stream), std::pair(format.Width, format.Height));
    }
}

TEST_P(PlatformContract, AStillThatHasEndedHoldsItsStreamNoLonger) {
    const MediaCapture capture = open();
    const auto stream = newStream();
    const auto holders = std::make_shared<std::promise<long>>();
    takeStill(capture, stream).Completed([holders, &stream](const auto&, AsyncStatus) {
        holders->set_value(stream.use_count());
    });
    EXPECT_EQ(holders->get_future().get(), 1);
    EXPECT_TRUE(isPng(stream));
}

TEST_P(PlatformContract, AStillIsWrittenAtThePositionOfTheStream) {
    const MediaCapture capture = open();
    const auto stream = newStream();
    stream->Write(std::array<std::uint8_t, 3>{1, 2, 3});
    blockingWait(takeStill(capture, stream));
    EXPECT_GT(stream->Size(), 3U);
    std::array<std::uint8_t, 5> bytes{};
    EXPECT_EQ(stream->Read(bytes), 0U);
    stream->Seek(0);
    stream->Read(bytes);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 5>{1, 2, 3, 0x89, 'P'}));
}

TEST_P(PlatformContract, TheCallItselfRefusesAnEncodingOtherThanPngAndNoStream) {
    const MediaCapture capture = open();
    EXPECT_EQ(codeRaisedBy([&] { capture->CapturePhotoToStreamAsync({u"JPEG"}, newStream()); }),
              winrt::result::invalidArgument);
    EXPECT_EQ(codeRaisedBy([&] { takeStill(capture, nullptr); }), winrt::result::invalidArgument);
}

TEST_P(PlatformContract, AStillDoesNotCountAsStreaming) {
    const MediaCapture capture = open();
    if (!_subject->holdStills())
        GTEST_SKIP() << "Stills of this camera cannot be held up.";
    const auto stream = newStream();
    const IAsyncAction still = takeStill(capture, stream);
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    EXPECT_EQ(still.Status(), AsyncStatus::Started);
}

TEST_P(PlatformContract, ClosingFailsAStillThatIsUnderWay) {
    const MediaCapture capture = open();
    if (!_subject->holdStills())
        GTEST_SKIP() << "Stills of this camera cannot be held up.";
    const auto stream = newStream();
    const IAsyncAction still = takeStill(capture, stream);
    EXPECT_EQ(codeRaisedBy([&] { still.GetResults(); }), winrt::result::illegalMethodCall);
    capture->Close();
    ASSERT_TRUE(ends(still));
    EXPECT_EQ(codeRaisedBy([&] { still.GetResults(); }), winrt::result::closed);
    EXPECT_EQ(stream->Size(), 0U);
}

TEST_P(PlatformContract, StopAndCloseSucceedWithAStillPending) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    const auto stream = newStream();
    const IAsyncAction still = takeStill(capture, stream);
    EXPECT_NO_THROW(blockingWait(reader->StopAsync()));
    EXPECT_NO_THROW(capture->Close());
    // It may have been finished before, but does not come to a picture half written.
    ASSERT_TRUE(ends(still));
    EXPECT_EQ(still.Status() == AsyncStatus::Completed, isPng(stream));
    EXPECT_EQ(still.Status() == AsyncStatus::Error, stream->Size() == 0);
}
