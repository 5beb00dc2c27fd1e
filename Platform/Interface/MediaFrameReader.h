#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

/// Realtime drops the frames that nobody takes.
enum class MediaFrameReaderAcquisitionMode { Realtime = 0, Buffered = 1 };

enum class MediaFrameReaderStartStatus {
    Success = 0,
    UnknownFailure = 1,
    DeviceNotAvailable = 2,
    OutputFormatNotSupported = 3,
    ExclusiveControlNotAvailable = 4
};

/// Keeps a source's stream running between StartAsync and StopAsync. Any thread.
class IMediaFrameReader {
public:
    virtual ~IMediaFrameReader() = default;

    virtual void AcquisitionMode(MediaFrameReaderAcquisitionMode mode) = 0;
    virtual IAsyncOperation<MediaFrameReaderStartStatus> StartAsync() = 0;

    /// Succeeds on a camera that has gone.
    virtual IAsyncAction StopAsync() = 0;
};
using MediaFrameReader = std::shared_ptr<IMediaFrameReader>;

} // namespace Platform
