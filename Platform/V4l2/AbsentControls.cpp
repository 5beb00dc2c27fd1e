#include "Platform/V4l2/AbsentControls.h"

#include "Platform/Shared/PlatformError.h"

namespace Platform::V4l2 {

bool AbsentControl::supported(std::string_view operation) const {
    _core->requireCamera(operation);
    return false;
}

void AbsentControl::raise(std::string_view operation) const {
    _core->requireCamera(operation);
    throw Shared::platformError(operation, _core->worker(operation, 0)->path(), winrt::result::illegalMethodCall,
                                "the camera has no such control");
}

} // namespace Platform::V4l2
