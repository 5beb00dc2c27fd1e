#include "Tests/Platform/Interface/PlatformContract.h"

#include <chrono>

using namespace Platform;

TEST_P(PlatformContract, ACameraThatHasGoneRaisesOnEveryUseButStopAndClose) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const MediaFrameFormat format = source->SupportedFormats().GetAt(0);
    const VideoDeviceController controller = capture->VideoDeviceController();
    const MediaFrameReader reader = startReader(capture);
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    expectGone(usesOf(capture, source));
    expectGone(usesOf(source, format));
    expectGone(usesOf(controller));
    expectGone(usesOf(reader));
    EXPECT_NO_THROW(blockingWait(reader->StopAsync()));
    EXPECT_NO_THROW(capture->Close());
}

TEST_P(PlatformContract, OpeningACameraThatHasGoneRaises) {
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    EXPECT_EQ(codeRaisedBy([&] { open(); }), winrt::result::notFound);
}

TEST_P(PlatformContract, ACameraThatHasGoneHasNoGroup) {
    const std::u16string id = _settings.SourceGroup->Id();
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->FromIdAsync(id)); }), winrt::result::notFound);
    for (const MediaFrameSourceGroup& group : blockingWait(_platform->FindAllAsync()))
        EXPECT_NE(group->Id(), id);
}

TEST_P(PlatformContract, ACameraThatComesBackIsOpenedAnewUnderItsId) {
    const std::u16string id = _settings.SourceGroup->Id();
    const MediaCapture before = open();
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    before->Close();
    _subject->plugIn();
    _settings.SourceGroup = blockingWait(_platform->FindAllAsync()).GetAt(0);
    EXPECT_EQ(_settings.SourceGroup->Id(), id);
    const auto stream = newStream();
    blockingWait(takeStill(open(), stream));
    EXPECT_TRUE(isPng(stream));
}

TEST_P(PlatformContract, AStillUnderWayNeverEndsWhenTheCameraGoes) {
    const MediaCapture capture = open();
    if (!_subject->holdStills())
        GTEST_SKIP() << "Stills of this camera cannot be held up.";
    const auto stream = newStream();
    const auto asked = std::chrono::steady_clock::now();
    const IAsyncAction still = takeStill(capture, stream);
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    EXPECT_FALSE(CompletionFlag::of(still)->waitUntil(asked + heldFor + heldFor / 2));
    EXPECT_NO_THROW(capture->Close());
    EXPECT_EQ(still.Status(), AsyncStatus::Started);
    EXPECT_EQ(stream->Size(), 0U);
}
