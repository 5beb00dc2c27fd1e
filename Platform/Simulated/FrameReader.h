#pragma once

#include "Platform/Interface/MediaFrameReader.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <atomic>
#include <memory>
#include <utility>

namespace Platform::Simulated {

/// Keeps the stream of a capture running; there are no frames to be read. Any thread.
class FrameReader final : public IMediaFrameReader {
public:
    FrameReader(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera)
        : _stream(std::make_shared<Stream>(core)), _core(std::move(core)), _camera(std::move(camera)) {}

    void AcquisitionMode(MediaFrameReaderAcquisitionMode mode) override;
    IAsyncOperation<MediaFrameReaderStartStatus> StartAsync() override;
    IAsyncAction StopAsync() override;

private:
    /// Whether this reader runs. Shared with operations under way; ends with the last of them and the reader.
    class Stream {
    public:
        explicit Stream(std::shared_ptr<CaptureCore> core) : _core(std::move(core)) {}
        ~Stream() { run(false); }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        void run(bool on);

    private:
        const std::shared_ptr<CaptureCore> _core;
        std::atomic<bool> _runs = false;
    };

    const std::shared_ptr<Stream> _stream;
    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<SimulatedCamera> _camera;
};

} // namespace Platform::Simulated
