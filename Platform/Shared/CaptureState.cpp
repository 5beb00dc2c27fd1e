#include "Platform/Shared/CaptureState.h"

#include "Platform/Shared/PlatformError.h"

namespace Platform::Shared {

void CaptureState::require(Phase wanted, std::string_view operation, std::string_view device) const {
    if (_phase == wanted)
        return;
    if (_phase == Phase::Closed)
        throw closedError(operation, device);
    throw platformError(operation, device, winrt::result::illegalMethodCall,
                        _phase == Phase::New ? "the capture has not been initialised"
                                             : "the capture has been initialised already");
}

winrt::hresult_error closedError(std::string_view operation, std::string_view device) {
    return platformError(operation, device, winrt::result::closed, "the capture is closed");
}

} // namespace Platform::Shared
