#pragma once

#include "Platform/Interface/MediaFrameReader.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <atomic>
#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// Keeps a source's stream running. Any thread. Stops when it is released.
class FrameReader final : public IMediaFrameReader {
public:
    FrameReader(std::shared_ptr<CaptureCore> core, std::shared_ptr<CameraWorker> worker)
        : _core(std::move(core)), _worker(std::move(worker)) {}
    ~FrameReader() override;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    /// Frames that nobody takes are given back at once in either mode.
    void AcquisitionMode(MediaFrameReaderAcquisitionMode mode) override;
    IAsyncOperation<MediaFrameReaderStartStatus> StartAsync() override;
    IAsyncAction StopAsync() override;

private:
    using Running = std::shared_ptr<std::atomic<bool>>;

    static void stop(const std::shared_ptr<CameraWorker>& worker, const Running& running);

    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<CameraWorker> _worker;
    const Running _running = std::make_shared<std::atomic<bool>>(false);
};

} // namespace Platform::V4l2
