#include "Client/Transport/Descriptor.h"

#include <unistd.h>

#include <utility>

namespace CameraHub {

Descriptor::Descriptor(Descriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(_descriptor, other._descriptor);
    return *this;
}

Descriptor::~Descriptor() {
    if (_descriptor >= 0)
        close(_descriptor);
}

} // namespace CameraHub
