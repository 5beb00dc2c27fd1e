#include "Platform/Shared/ErrnoError.h"

#include "Platform/Shared/PlatformError.h"

#include <cerrno>
#include <system_error>

namespace Platform::Shared {

winrt::hresult codeOfErrno(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return winrt::result::accessDenied;
    case ENOENT:
    case ENODEV:
    case ESHUTDOWN: // pulled out in the middle of a transfer
    case ENXIO:
        return winrt::result::notFound;
    case EBUSY:
        return winrt::result::busy;
    case EINVAL:
        return winrt::result::invalidArgument;
    case ENOMEM:
        return winrt::result::outOfMemory;
    case ETIMEDOUT:
        return winrt::result::timeout;
    default:
        return winrt::result::fail;
    }
}

winrt::hresult_error errnoError(std::string_view operation, std::string_view device, int error) {
    return platformError(operation, device, codeOfErrno(error), std::generic_category().message(error));
}

} // namespace Platform::Shared
