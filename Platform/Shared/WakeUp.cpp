#include "Platform/Shared/WakeUp.h"

#include "Platform/Shared/ErrnoError.h"

#include <sys/eventfd.h>

#include <cerrno>

namespace Platform::Shared {

WakeUp::WakeUp(std::string_view sleeper) : _descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!_descriptor.isOpen())
        throw errnoError("eventfd", sleeper, errno);
}

void WakeUp::wake() const {
    // Fails only when the counter is full, and then the thread is awake anyway.
    ::eventfd_write(_descriptor.get(), 1);
}

void WakeUp::drain() const {
    eventfd_t count = 0;
    ::eventfd_read(_descriptor.get(), &count);
}

} // namespace Platform::Shared
