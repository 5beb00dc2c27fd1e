#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Support/RaisedError.h"

#include <cstdint>

using namespace Platform;

namespace {

const std::string isNew = "the capture has not been initialised";
const std::string isInitialised = "the capture has been initialised already";
const std::string isClosed = "the capture is closed";

} // namespace

TEST_P(PlatformContract, ANewCaptureRaisesOnEveryUseButClose) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    expectRefused(usesOf(capture, nullptr), winrt::result::illegalMethodCall, isNew);
    EXPECT_NO_THROW(capture->Close());
}

TEST_P(PlatformContract, AClosedCaptureRaisesOnEveryUseButClose) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    capture->Close();
    expectRefused(usesOf(capture, source), winrt::result::closed, isClosed);
    expectRefused({{"MediaCapture.InitializeAsync", [&] { blockingWait(capture->InitializeAsync(_settings)); }}},
                  winrt::result::closed, isClosed);
    EXPECT_NO_THROW(capture->Close());
}

TEST_P(PlatformContract, WhatAClosedCaptureGaveOutRaises) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const MediaFrameFormat format = source->SupportedFormats().GetAt(0);
    const VideoDeviceController controller = capture->VideoDeviceController();
    const MediaFrameReader reader = startReader(capture);
    capture->Close();
    expectRefused(usesOf(source, format), winrt::result::closed, isClosed);
    expectRefused(usesOf(controller), winrt::result::closed, isClosed);
    expectRefused(usesOf(reader), winrt::result::closed, isClosed);
}

TEST_P(PlatformContract, ACaptureThatWasClosedWhileItWasNewCannotBeOpened) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    capture->Close();
    expectRefused({{"MediaCapture.InitializeAsync", [&] { blockingWait(capture->InitializeAsync(_settings)); }}},
                  winrt::result::closed, isClosed);
}

TEST_P(PlatformContract, AnOpenCaptureCannotBeOpenedAgain) {
    const MediaCapture capture = open();
    expectRefused({{"MediaCapture.InitializeAsync", [&] { blockingWait(capture->InitializeAsync(_settings)); }}},
                  winrt::result::illegalMethodCall, isInitialised);
    EXPECT_NO_THROW(capture->FrameSources());
}

TEST_P(PlatformContract, ACaptureThatCouldNotBeOpenedIsStillNew) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(capture->InitializeAsync({})); }), winrt::result::invalidArgument);
    expectRefused(usesOf(capture, nullptr), winrt::result::illegalMethodCall, isNew);
    blockingWait(capture->InitializeAsync(_settings));
    EXPECT_NO_THROW(capture->FrameSources());
}

TEST_P(PlatformContract, ACaptureThatWasClosedSinceItCouldNotBeOpenedSaysWhy) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    const auto error = errorOf([&] { blockingWait(capture->InitializeAsync({})); });
    capture->Close();
    expectRefused(usesOf(capture, nullptr), winrt::result::closed, isClosed + ": " + Halden::toUtf8(error.message()));
}

TEST_P(PlatformContract, ACaptureThatWasClosedSinceItsFormatCouldNotBeSetSaysWhy) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const auto error = errorOf([&] { blockingWait(source->SetFormatAsync({1000, 7, 7, 1.0, u"none"})); });
    capture->Close();
    expectRefused(usesOf(capture, source), winrt::result::closed, isClosed + ": " + Halden::toUtf8(error.message()));
}

TEST_P(PlatformContract, ACaptureThatWasMadeReadyInTheEndIsClosedForNoReason) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(capture->InitializeAsync({})); }), winrt::result::invalidArgument);
    blockingWait(capture->InitializeAsync(_settings));
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(capture->InitializeAsync(_settings)); }),
              winrt::result::illegalMethodCall);
    const MediaFrameSource source = firstSource(capture);
    capture->Close();
    expectRefused(usesOf(capture, source), winrt::result::closed, isClosed);
}

TEST_P(PlatformContract, ACameraMayBeOpenInSeveralCaptures) {
    const MediaCapture first = open();
    const MediaCapture second = open();
    first->Close();
    EXPECT_NO_THROW(second->FrameSources());
}

TEST_P(PlatformContract, ReleasingTheLastHandleClosesWhateverTheCaptureGaveOut) {
    MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const MediaFrameReader reader = startReader(capture);
    capture.reset();
    expectRefused(usesOf(reader), winrt::result::closed, isClosed);
    expectRefused({{"MediaFrameSource.SupportedFormats", [&] { source->SupportedFormats(); }}}, winrt::result::closed,
                  isClosed);
    EXPECT_NO_THROW(open()->FrameSources());
}

TEST_P(PlatformContract, ACaptureCanBeOpenedAndClosedRepeatedly) {
    for (int i = 0; i < 5; ++i) {
        const MediaCapture capture = open();
        const MediaFrameReader reader = startReader(capture);
        blockingWait(reader->StopAsync());
        capture->Close();
    }
    EXPECT_NO_THROW(open());
}

TEST_P(PlatformContract, FrameSourcesHaveTheOrderOfTheGroup) {
    const MediaCapture capture = open();
    const auto infos = _settings.SourceGroup->SourceInfos();
    std::uint32_t index = 0;
    for (const auto& [id, source] : capture->FrameSources()) {
        EXPECT_EQ(id, infos.GetAt(index)->Id());
        EXPECT_EQ(source->Info()->Id(), id);
        ++index;
    }
    EXPECT_EQ(index, infos.Size());
}

TEST_P(PlatformContract, AFormatStandsAtThePositionThatItTells) {
    const MediaCapture capture = open();
    const auto formats = firstSource(capture)->SupportedFormats();
    EXPECT_GT(formats.Size(), 0U);
    for (std::uint32_t i = 0; i < formats.Size(); ++i)
        EXPECT_EQ(formats.GetAt(i).Index, i);
}

TEST_P(PlatformContract, FormatsHaveTheOrderOfTheProfile) {
    const MediaCapture capture = open();
    const auto second = _settings.SourceGroup->SourceInfos().GetAt(0)->asMediaFrameSourceInfo2();
    if (!second)
        GTEST_SKIP() << "The platform does not have the second interface.";
    const auto profile = second->VideoProfileMediaDescription();
    const auto formats = firstSource(capture)->SupportedFormats();
    ASSERT_EQ(formats.Size(), profile.Size());
    for (std::uint32_t i = 0; i < profile.Size(); ++i) {
        EXPECT_EQ(formats.GetAt(i).Width, profile.GetAt(i).Width);
        EXPECT_EQ(formats.GetAt(i).Height, profile.GetAt(i).Height);
        EXPECT_EQ(formats.GetAt(i).FrameRate, profile.GetAt(i).FrameRate);
        EXPECT_EQ(formats.GetAt(i).Subtype, profile.GetAt(i).Subtype);
    }
}

TEST_P(PlatformContract, AFormatThatTheSourceLacksIsRefused) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    MediaFrameFormat format = source->SupportedFormats().GetAt(0);
    format.Index = source->SupportedFormats().Size();
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(source->SetFormatAsync(format)); }), winrt::result::invalidArgument);
}
