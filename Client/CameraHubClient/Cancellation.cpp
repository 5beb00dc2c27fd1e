#include "Client/Transport/Descriptor.h"

#include <CameraHubClient/Cancellation.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace CameraHub {

Cancellation::Cancellation() : _event(std::make_shared<const Descriptor>(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
    if (_event->get() < 0)
        throw std::system_error(errno, std::generic_category(), "a cancellation needs a file descriptor");
}

void Cancellation::cancel() const noexcept {
    const int errorBefore = errno; // belongs to whoever a signal has interrupted
    const std::uint64_t one = 1;
    // Nothing is ever read from it: full, it refuses, and is readable as before.
    [[maybe_unused]] const ssize_t written = ::write(_event->get(), &one, sizeof one);
    errno = errorBefore;
}

bool Cancellation::isCancelled() const noexcept {
    pollfd entry{_event->get(), POLLIN, 0};
    return ::poll(&entry, 1, 0) > 0;
}

int Cancellation::descriptor() const noexcept { return _event->get(); }

} // namespace CameraHub
