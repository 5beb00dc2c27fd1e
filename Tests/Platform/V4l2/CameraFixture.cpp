#include "Tests/Platform/V4l2/CameraFixture.h"

#include "Platform/Imaging/ImageDecoder.h"

#include <linux/videodev2.h>

namespace Platform::V4l2 {

FrameClock::FrameClock(FakeDriver& driver, std::string path, FakeFrame frame)
    : _thread([this, &driver, path = std::move(path), frame = std::move(frame)] {
          while (!_stopping) {
              driver.deliver(path, frame);
              std::this_thread::sleep_for(std::chrono::milliseconds(2));
          }
      }) {}

FrameClock::~FrameClock() {
    _stopping = true;
    _thread.join();
}

CameraFixture::CameraFixture() : platform(createV4l2Platform(driver, lister, limits)) {
    driver->plug(videoPath, usbCamera());
    lister->add(usbNode(0));
}

CameraFixture::~CameraFixture() {
    driver->heal();
    driver->release();
    platform.reset();
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }))
        << driver->openDescriptors() << " descriptors, " << driver->mappings() << " mappings";
}

void CameraFixture::plug(FakeDevice device) {
    driver->unplug(videoPath);
    driver->plug(videoPath, std::move(device));
}

MediaFrameSourceGroup CameraFixture::group() { return blockingWait(platform->FindAllAsync()).GetAt(0); }

MediaCapture CameraFixture::open() {
    auto capture = platform->CreateMediaCapture();
    blockingWait(capture->InitializeAsync({group(), PhotoCaptureSource::VideoPreview, StreamingCaptureMode::Video}));
    return capture;
}

MediaFrameSource CameraFixture::sourceOf(const MediaCapture& capture) {
    return capture->FrameSources().begin()->second;
}

void CameraFixture::setFormat(const MediaCapture& capture, std::uint32_t index) {
    const auto source = sourceOf(capture);
    blockingWait(source->SetFormatAsync(source->SupportedFormats().GetAt(index)));
}

MediaFrameReader CameraFixture::startReader(const MediaCapture& capture) {
    auto reader = blockingWait(capture->CreateFrameReaderAsync(sourceOf(capture)));
    blockingWait(reader->StartAsync());
    return reader;
}

std::optional<std::vector<std::uint8_t>> CameraFixture::still(const MediaCapture& capture,
                                                              std::chrono::milliseconds limit) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    if (!CompletionFlag::of(action)->waitUntil(std::chrono::steady_clock::now() + limit))
        return std::nullopt;
    action.GetResults();
    std::vector<std::uint8_t> png(stream->Size());
    stream->Seek(0);
    stream->Read(png);
    return png;
}

bool CameraFixture::deliverTaken(const FakeFrame& frame) {
    const unsigned taken = driver->calls(VIDIOC_DQBUF);
    return driver->deliver(videoPath, frame) && waitUntil([&] { return driver->calls(VIDIOC_DQBUF) > taken; });
}

int CameraFixture::brightness(const std::vector<std::uint8_t>& png) {
    const Imaging::RgbImage image = Imaging::decodeImage(png);
    return image.pixels.at((std::size_t{image.height} / 2 * image.width + image.width / 2) * 3);
}

} // namespace Platform::V4l2
