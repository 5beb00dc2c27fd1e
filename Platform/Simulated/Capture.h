#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>
#include <utility>

namespace Platform::Simulated {

/// A capture of a simulated camera. Any thread.
class Capture final : public IMediaCapture {
public:
    explicit Capture(std::shared_ptr<Simulation> simulation)
        : _core(std::make_shared<CaptureCore>(std::move(simulation))) {}
    /// Closes, which is no call and stands in no journal.
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
    void Close() override;

private:
    const std::shared_ptr<CaptureCore> _core;
};

} // namespace Platform::Simulated
