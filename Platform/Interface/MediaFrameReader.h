#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

/// Realtime drops the frames that nobody takes; Buffered keeps them for a while.
enum class MediaFrameReaderAcquisitionMode { Realtime = 0, Buffered = 1 };

/// How a start ended. The platforms that there are give Success alone, and fail the operation otherwise; another one
/// may give the rest.
enum class MediaFrameReaderStartStatus {
    Success = 0,
    UnknownFailure = 1,
    DeviceNotAvailable = 2,
    OutputFormatNotSupported = 3,
    ExclusiveControlNotAvailable = 4
};

/// Keeps a source's stream running between StartAsync and StopAsync, which is what a camera's automatic controls need;
/// frames cannot be had from it. Several readers of a source share its stream. Any thread. Releasing the last handle
/// stops, once operations under way have ended.
class IMediaFrameReader {
public:
    virtual ~IMediaFrameReader() = default;

    /// May be set before and after the start. Raises the errors of the capture's state (see IMediaCapture).
    virtual void AcquisitionMode(MediaFrameReaderAcquisitionMode mode) = 0;

    /// The stream runs when the operation has ended; no frame needs to have come. Success without any effect on a
    /// reader that runs. Fails with the errors of the capture's state, and with busy where another program streams.
    virtual IAsyncOperation<MediaFrameReaderStartStatus> StartAsync() = 0;

    /// Ends the stream unless another reader or a still needs it. Succeeds on a reader that does not run, and on a
    /// camera that is gone. On a closed capture, which has stopped its readers, it may fail with closed.
    virtual IAsyncAction StopAsync() = 0;
};
using MediaFrameReader = std::shared_ptr<IMediaFrameReader>;

} // namespace Platform
