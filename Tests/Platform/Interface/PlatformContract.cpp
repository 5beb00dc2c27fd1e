#include "Tests/Platform/Interface/PlatformContract.h"

#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <array>
#include <chrono>

using namespace Platform;

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

MediaFrameReader PlatformContract::createReader(const MediaCapture& capture) {
    return blockingWait(capture->CreateFrameReaderAsync(firstSource(capture)));
}

MediaFrameReader PlatformContract::startReader(const MediaCapture& capture) {
    const MediaFrameReader reader = createReader(capture);
    reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime);
    EXPECT_EQ(blockingWait(reader->StartAsync()), MediaFrameReaderStartStatus::Success);
    return reader;
}

IAsyncAction PlatformContract::takeStill(const MediaCapture& capture, const RandomAccessStream& stream) {
    return capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
}

RandomAccessStream PlatformContract::newStream() { return std::make_shared<InMemoryRandomAccessStream>(); }

std::vector<CaptureUse> PlatformContract::usesOf(const MediaCapture& capture, const MediaFrameSource& source) {
    return {{"MediaCapture.FrameSources", [=] { capture->FrameSources(); }},
            {"MediaCapture.VideoDeviceController", [=] { capture->VideoDeviceController(); }},
            {"MediaCapture.CreateFrameReaderAsync", [=] { blockingWait(capture->CreateFrameReaderAsync(source)); }},
            {"MediaCapture.CapturePhotoToStreamAsync", [=, this] { takeStill(capture, newStream()); }},
            {"MediaCapture.CameraStreamState", [=] { capture->CameraStreamState(); }}};
}

std::vector<CaptureUse> PlatformContract::usesOf(const MediaFrameSource& source, const MediaFrameFormat& format) {
    return {{"MediaFrameSource.Info", [=] { source->Info(); }},
            {"MediaFrameSource.SupportedFormats", [=] { source->SupportedFormats(); }},
            {"MediaFrameSource.SetFormatAsync", [=] { blockingWait(source->SetFormatAsync(format)); }}};
}

std::vector<CaptureUse> PlatformContract::usesOf(const VideoDeviceController& controller) {
    std::vector<CaptureUse> uses;
    for (const MediaDeviceControl& control : {controller->Exposure(), controller->Focus(), controller->WhiteBalance(),
                                              controller->Brightness(), controller->Contrast()}) {
        uses.push_back({"MediaDeviceControl.Capabilities", [=] { control->Capabilities(); }});
        uses.push_back({"MediaDeviceControl.TrySetValue", [=] { control->TrySetValue(0); }});
        uses.push_back({"MediaDeviceControl.TryGetValue", [=, value = 0.0]() mutable { control->TryGetValue(value); }});
        uses.push_back({"MediaDeviceControl.TrySetAuto", [=] { control->TrySetAuto(true); }});
        uses.push_back({"MediaDeviceControl.TryGetAuto", [=, on = false]() mutable { control->TryGetAuto(on); }});
    }
    uses.push_back({"ExposureControl.Supported", [=] { controller->ExposureControl()->Supported(); }});
    uses.push_back({"FocusControl.Supported", [=] { controller->FocusControl()->Supported(); }});
    uses.push_back({"WhiteBalanceControl.Supported", [=] { controller->WhiteBalanceControl()->Supported(); }});
    uses.push_back({"IsoSpeedControl.Supported", [=] { controller->IsoSpeedControl()->Supported(); }});
    uses.push_back(
        {"ExposureCompensationControl.Supported", [=] { controller->ExposureCompensationControl()->Supported(); }});
    return uses;
}

std::vector<CaptureUse> PlatformContract::usesOf(const MediaFrameReader& reader) {
    return {{"MediaFrameReader.AcquisitionMode",
             [=] { reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime); }},
            {"MediaFrameReader.StartAsync", [=] { blockingWait(reader->StartAsync()); }}};
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
        EXPECT_EQ(codeRaisedBy(use.call), winrt::result::notFound) << use.operation;
}

winrt::hresult codeRaisedBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const winrt::hresult_error& error) {
        return error.code();
    }
    return winrt::result::ok;
}

bool ends(const IAsyncAction& action) {
    return CompletionFlag::of(action)->waitUntil(std::chrono::steady_clock::now() + patience);
}

std::pair<std::uint32_t, std::uint32_t> pngSize(const RandomAccessStream& stream) {
    // The signature, then the first chunk: its length and name, width and height.
    constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::array<std::uint8_t, 24> head{};
    stream->Seek(0);
    if (stream->Read(head) < head.size() || !std::equal(signature.begin(), signature.end(), head.begin()))
        return {0, 0};
    const auto number = [&](std::size_t at) {
        return static_cast<std::uint32_t>(head.at(at) << 24 | head.at(at + 1) << 16 | head.at(at + 2) << 8 |
                                          head.at(at + 3));
    };
    return {number(16), number(20)};
}

bool isPng(const RandomAccessStream& stream) { return pngSize(stream).first > 0; }
