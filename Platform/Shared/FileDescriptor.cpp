#include "Platform/Shared/FileDescriptor.h"

#include <unistd.h>

namespace Platform::Shared {

FileDescriptor::~FileDescriptor() {
    if (isOpen())
        ::close(_descriptor);
}

} // namespace Platform::Shared
