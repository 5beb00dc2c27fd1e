#include "Platform/Shared/CaptureState.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformError.h"

namespace Platform::Shared {

void CaptureState::madeReady(const std::optional<winrt::hresult_error>& error) {
    // A call that the state does not allow says nothing about the camera.
    if (error && (error->code() == winrt::result::closed || error->code() == winrt::result::illegalMethodCall))
        return;
    _whyNotReady = error ? Halden::toUtf8(error->message()) : std::string();
}

void CaptureState::requireNew(std::string_view operation, std::string_view device) const {
    requireNotClosed(operation, device);
    if (_phase != Phase::New)
        throw platformError(operation, device, winrt::result::illegalMethodCall,
                            "the capture has been initialised already");
}

void CaptureState::requireInitialised(std::string_view operation, std::string_view device) const {
    requireNotClosed(operation, device);
    if (_phase != Phase::Initialised)
        throw platformError(operation, device, winrt::result::illegalMethodCall,
                            "the capture has not been initialised");
}

void CaptureState::requireNotClosed(std::string_view operation, std::string_view device) const {
    if (_phase == Phase::Closed)
        throw closedError(operation, device, _whyNotReady);
}

} // namespace Platform::Shared
