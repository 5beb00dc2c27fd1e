#include "Tests/Platform/Interface/PlatformContract.h"

#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Tests/Support/RaisedError.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <thread>
#include <vector>

using namespace Platform;

namespace {

template <typename Operation> bool raises(const Operation& operation) {
    try {
        operation();
    } catch (const winrt::hresult_error&) {
        return true;
    }
    return false;
}

std::shared_ptr<InMemoryRandomAccessStream> newStream() { return std::make_shared<InMemoryRandomAccessStream>(); }

bool isPng(const RandomAccessStream& stream) {
    const std::vector<std::uint8_t> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> start(signature.size());
    stream->Seek(0);
    stream->Read(start);
    return start == signature;
}

} // namespace

void PlatformContract::SetUp() {
    _subject = GetParam().make();
    _platform = _subject->platform();
    _settings.SourceGroup = blockingWait(_platform->FindAllAsync()).GetAt(0);
    _settings.PhotoCaptureSource = PhotoCaptureSource::VideoPreview;
    _settings.StreamingCaptureMode = StreamingCaptureMode::Video;
}

MediaCapture PlatformContract::open() {
    const MediaCapture capture = _platform->CreateMediaCapture();
    blockingWait(capture->InitializeAsync(_settings));
    return capture;
}

MediaFrameSource PlatformContract::firstSource(const MediaCapture& capture) {
    return capture->FrameSources().begin()->second;
}

MediaFrameReader PlatformContract::startReader(const MediaCapture& capture) {
    const MediaFrameReader reader = blockingWait(capture->CreateFrameReaderAsync(firstSource(capture)));
    reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime);
    EXPECT_EQ(blockingWait(reader->StartAsync()), MediaFrameReaderStartStatus::Success);
    return reader;
}

IAsyncAction PlatformContract::takeStill(const MediaCapture& capture, const RandomAccessStream& stream) {
    return capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
}

std::vector<CaptureUse> PlatformContract::usesOf(const MediaCapture& capture, const MediaFrameSource& source) {
    return {{"MediaCapture.FrameSources", [=] { capture->FrameSources(); }},
            {"MediaCapture.VideoDeviceController", [=] { capture->VideoDeviceController(); }},
            {"MediaCapture.CreateFrameReaderAsync", [=] { blockingWait(capture->CreateFrameReaderAsync(source)); }},
            {"MediaCapture.CapturePhotoToStreamAsync", [=, this] { blockingWait(takeStill(capture, newStream())); }},
            {"MediaCapture.CameraStreamState", [=] { capture->CameraStreamState(); }}};
}

void PlatformContract::expectRefused(const std::vector<CaptureUse>& uses, winrt::hresult code,
                                     const std::string& reason) {
    for (const CaptureUse& use : uses) {
        const winrt::hresult_error error = errorOf(use.call);
        const std::string text(error.message().begin(), error.message().end());
        EXPECT_EQ(error.code(), code) << use.operation;
        EXPECT_TRUE(text.starts_with(use.operation + " on ")) << text;
        EXPECT_TRUE(text.ends_with(": " + reason)) << text;
    }
}

void PlatformContract::expectGone(const std::vector<CaptureUse>& uses) {
    for (const CaptureUse& use : uses)
        EXPECT_EQ(errorOf(use.call).code(), winrt::result::notFound) << use.operation;
}

TEST_P(PlatformContract, ANewCaptureRaisesOnEveryUseButClose) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    expectRefused(usesOf(capture, nullptr), winrt::result::illegalMethodCall, "the capture has not been initialised");
    EXPECT_FALSE(raises([&] { capture->Close(); }));
}

TEST_P(PlatformContract, AClosedCaptureRaisesOnEveryUseButClose) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const VideoDeviceController controller = capture->VideoDeviceController();
    const MediaFrameFormat format = source->SupportedFormats().GetAt(0);
    capture->Close();
    std::vector<CaptureUse> uses = usesOf(capture, source);
    uses.insert(uses.end(),
                {{"MediaCapture.InitializeAsync", [&] { blockingWait(capture->InitializeAsync(_settings)); }},
                 {"MediaFrameSource.Info", [&] { source->Info(); }},
                 {"MediaFrameSource.SupportedFormats", [&] { source->SupportedFormats(); }},
                 {"MediaFrameSource.SetFormatAsync", [&] { blockingWait(source->SetFormatAsync(format)); }},
                 {"MediaDeviceControl.Capabilities", [&] { controller->Exposure()->Capabilities(); }},
                 {"ExposureControl.Supported", [&] { controller->ExposureControl()->Supported(); }}});
    expectRefused(uses, winrt::result::closed, "the capture is closed");
    EXPECT_FALSE(raises([&] { capture->Close(); }));
}

TEST_P(PlatformContract, AnOpenCaptureCannotBeOpenedAgain) {
    const MediaCapture capture = open();
    expectRefused({{"MediaCapture.InitializeAsync", [&] { blockingWait(capture->InitializeAsync(_settings)); }}},
                  winrt::result::illegalMethodCall, "the capture has been initialised already");
    EXPECT_FALSE(raises([&] { capture->FrameSources(); }));
}

TEST_P(PlatformContract, OpeningWithoutASourceGroupRaises) {
    const MediaCapture capture = _platform->CreateMediaCapture();
    EXPECT_TRUE(raises([&] { blockingWait(capture->InitializeAsync({})); }));
}

TEST_P(PlatformContract, ReleasingTheLastHandleCloses) {
    MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    capture.reset();
    EXPECT_TRUE(raises([&] { source->SupportedFormats(); }));
    EXPECT_FALSE(raises([&] { open()->FrameSources(); }));
}

TEST_P(PlatformContract, ACaptureCanBeOpenedAndClosedRepeatedly) {
    for (int i = 0; i < 5; ++i) {
        const MediaCapture capture = open();
        const MediaFrameReader reader = startReader(capture);
        blockingWait(reader->StopAsync());
        capture->Close();
    }
    EXPECT_FALSE(raises([&] { open(); }));
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

TEST_P(PlatformContract, AFrameReaderNeedsASource) {
    const MediaCapture capture = open();
    EXPECT_TRUE(raises([&] { blockingWait(capture->CreateFrameReaderAsync(nullptr)); }));
}

TEST_P(PlatformContract, TheStreamRunsWhileAReaderDoes) {
    const MediaCapture capture = open();
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    const MediaFrameReader reader = startReader(capture);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
        blockingWait(reader->StopAsync());
        EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
        blockingWait(reader->StartAsync());
    }
}

TEST_P(PlatformContract, ReleasingTheReaderEndsTheStream) {
    const MediaCapture capture = open();
    startReader(capture).reset();
    // The operation that started it may still hold the stream for a moment.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (capture->CameraStreamState() != CameraStreamState::NotStreaming && std::chrono::steady_clock::now() < limit)
        std::this_thread::yield();
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
}

TEST_P(PlatformContract, StartingAndStoppingTwiceChangesNothing) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    EXPECT_EQ(blockingWait(reader->StartAsync()), MediaFrameReaderStartStatus::Success);
    blockingWait(reader->StopAsync());
    EXPECT_FALSE(raises([&] { blockingWait(reader->StopAsync()); }));
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
}

TEST_P(PlatformContract, AStillIsAPng) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
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

TEST_P(PlatformContract, AnEncodingOtherThanPngRaises) {
    const MediaCapture capture = open();
    EXPECT_TRUE(raises([&] { blockingWait(capture->CapturePhotoToStreamAsync({u"JPEG"}, newStream())); }));
}

TEST_P(PlatformContract, StopAndCloseSucceedWithAStillPending) {
    const MediaCapture capture = open();
    const MediaFrameReader reader = startReader(capture);
    const auto stream = newStream();
    const IAsyncAction still = takeStill(capture, stream);
    EXPECT_FALSE(raises([&] { blockingWait(reader->StopAsync()); }));
    EXPECT_FALSE(raises([&] { capture->Close(); }));
    // It may have been finished before, but does not come to a picture half written.
    const auto flag = CompletionFlag::of(still);
    ASSERT_TRUE(flag->waitUntil(std::chrono::steady_clock::now() + std::chrono::seconds(10)));
    EXPECT_EQ(still.Status() == AsyncStatus::Completed, isPng(stream));
    EXPECT_EQ(still.Status() == AsyncStatus::Error, stream->Size() == 0);
}

TEST_P(PlatformContract, AnUnknownDeviceHasNoGroup) {
    EXPECT_TRUE(raises([&] { blockingWait(_platform->FromIdAsync(u"no such device")); }));
}

TEST_P(PlatformContract, TheWatcherReportsTheCameraByTheIdOfItsGroup) {
    const DeviceWatcher watcher = _platform->CreateWatcher(_platform->GetDeviceSelector());
    std::promise<std::u16string> added;
    std::promise<void> completed;
    watcher->Added([&](const auto&, const DeviceInformation& device) {
        added.set_value(device->Id());
        return winrt::result::ok;
    });
    watcher->EnumerationCompleted([&](const auto&) { return completed.set_value(), winrt::result::ok; });
    watcher->Start();
    auto id = added.get_future();
    ASSERT_EQ(id.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(blockingWait(_platform->FromIdAsync(id.get()))->Id(), _settings.SourceGroup->Id());
    EXPECT_EQ(completed.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST_P(PlatformContract, AnotherSelectorCannotBeWatched) {
    EXPECT_TRUE(raises([&] { _platform->CreateWatcher(u"something else")->Start(); }));
}

TEST_P(PlatformContract, ACameraThatHasGoneRaisesOnEveryUseButStopAndClose) {
    const MediaCapture capture = open();
    const MediaFrameSource source = firstSource(capture);
    const VideoDeviceController controller = capture->VideoDeviceController();
    const MediaFrameReader reader = startReader(capture);
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    expectGone(usesOf(capture, source));
    EXPECT_TRUE(raises([&] { source->SupportedFormats(); }));
    EXPECT_TRUE(raises([&] { blockingWait(reader->StartAsync()); }));
    EXPECT_TRUE(raises([&] { controller->Exposure()->Capabilities(); }));
    EXPECT_FALSE(raises([&] { blockingWait(reader->StopAsync()); }));
    EXPECT_FALSE(raises([&] { capture->Close(); }));
}

TEST_P(PlatformContract, OpeningACameraThatHasGoneRaises) {
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    EXPECT_TRUE(raises([&] { open(); }));
}
