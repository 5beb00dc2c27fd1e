#include "Platform/Shared/ErrnoError.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <cerrno>
#include <string>
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

winrt::hresult_error platformError(std::string_view operation, std::string_view device, winrt::hresult code,
                                   std::string_view reason) {
    std::string text(operation);
    text.append(" on ").append(device).append(": ").append(reason);
    return {code, Halden::toUtf16(text)};
}

} // namespace Platform::Shared
