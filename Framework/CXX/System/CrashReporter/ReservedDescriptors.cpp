#include "Framework/CXX/System/CrashReporter/ReservedDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace Halden::System {

void ReservedDescriptors::take() noexcept {
    for (int& descriptor : _descriptors)
        if (descriptor < 0)
            descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
}

void ReservedDescriptors::release() noexcept {
    for (int& descriptor : _descriptors) {
        if (descriptor >= 0) {
            close(descriptor);
            descriptor = -1;
        }
    }
}

} // namespace Halden::System
