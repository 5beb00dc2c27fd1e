#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Platform/Simulated/Session/CaptureSession.h"

#include <memory>

namespace Platform::Simulated {

/// The handle to a session of a simulated camera.
class SimulatedCapture final : public IMediaCapture {
public:
    explicit SimulatedCapture(std::shared_ptr<Simulation> simulation)
        : _session(std::make_shared<CaptureSession>(std::move(simulation))) {}
    /// Closes, which is no call and stands in no journal.
    ~SimulatedCapture() override { _session->close(); }
    SimulatedCapture(const SimulatedCapture&) = delete;
    SimulatedCapture& operator=(const SimulatedCapture&) = delete;

    IAsyncAction InitializeAsync(const MediaCaptureInitializationSettings& settings) override;
    MapView<MediaFrameSource> FrameSources() const override;
    Platform::VideoDeviceController VideoDeviceController() const override;
    IAsyncOperation<MediaFrameReader> CreateFrameReaderAsync(const MediaFrameSource& source) override;
    IAsyncAction CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                           const RandomAccessStream& stream) override;
    Platform::CameraStreamState CameraStreamState() const override;
    void Close() override;

private:
    const std::shared_ptr<CaptureSession> _session;
};

} // namespace Platform::Simulated
