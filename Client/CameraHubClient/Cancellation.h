#pragma once

#include <CameraHubClient/Export.h>

#include <memory>

namespace CameraHub {

class Descriptor;

/// Ends the calls of a client from outside: they then throw Cancelled. Copies belong together: cancelling one cancels
/// all. It cannot be taken back; a new client with a new Cancellation goes on.
/// Any thread may use any copy, also while a client waits with it.
class CAMERA_HUB_CLIENT_EXPORT Cancellation {
public:
    /// Throws std::system_error where the process has no file descriptor left.
    Cancellation();

    /// Ends all calls that wait with this, and all later ones at once. A signal handler may call it.
    void cancel() const noexcept;

    bool isCancelled() const noexcept;

    /// Becomes readable by poll() at the cancellation, and stays so; it is not to be read, written or closed.
    int descriptor() const noexcept;

private:
    std::shared_ptr<const Descriptor> _event;
};

} // namespace CameraHub
