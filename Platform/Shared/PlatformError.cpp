#include "Platform/Shared/PlatformError.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <string>

namespace Platform::Shared {

winrt::hresult_error platformError(std::string_view operation, std::string_view device, winrt::hresult code,
                                   std::string_view reason) {
    std::string text(operation);
    text.append(" on ").append(device).append(": ").append(reason);
    return {code, Halden::toUtf16(text)};
}

winrt::hresult_error closedError(std::string_view operation, std::string_view device, std::string_view cause) {
    std::string reason = "the capture is closed";
    if (!cause.empty())
        reason.append(": ").append(cause);
    return platformError(operation, device, winrt::result::closed, reason);
}

} // namespace Platform::Shared
