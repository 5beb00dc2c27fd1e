#pragma once

#include "Platform/Interface/HresultError.h"
#include "Platform/Shared/PlatformError.h"

#include <string_view>

namespace Platform::V4l2 {

/// "OPERATION on DEVICE: reason of the system (what that means for a camera)".
winrt::hresult_error deviceError(std::string_view operation, std::string_view device, int error);

/// Whether a call that fails so finds the camera pulled out: ENODEV, and ESHUTDOWN in the middle of a transfer.
bool meansUnplugged(int error);

/// The error of every use of a camera that is gone.
winrt::hresult_error goneError(std::string_view operation, std::string_view device);

/// The error of what the camera refuses to do or to tell.
winrt::hresult_error refusedError(std::string_view operation, std::string_view device);

using Shared::closedError;

} // namespace Platform::V4l2
