#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// A camera of the kernel. Stills come from the group's first source, as the controls do. Any thread.
class Capture final : public IMediaCapture {
public:
    explicit Capture(CaptureSurroundings surroundings)
        : _core(std::make_shared<CaptureCore>(std::move(surroundings))) {}
    ~Capture() override { _core->close(); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    IAsyncAction InitializeAsync(const MediaCaptureInitializationSettings& settings) override;
    MapView<MediaFrameSource> FrameSources() const override;
    Platform::VideoDeviceController VideoDeviceController() const override;
    IAsyncOperation<MediaFrameReader> CreateFrameReaderAsync(const MediaFrameSource& source) override;
    IAsyncAction CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                           const RandomAccessStream& stream) override;
    Platform::CameraStreamState CameraStreamState() const override;
    void Close() override { _core->close(); }

private:
    const std::shared_ptr<CaptureCore> _core;
};

} // namespace Platform::V4l2
