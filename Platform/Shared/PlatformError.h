#pragma once

#include "Platform/Interface/HresultError.h"

#include <string_view>

namespace Platform::Shared {

/// "OPERATION on DEVICE: reason" with that code. All texts are UTF-8.
winrt::hresult_error platformError(std::string_view operation, std::string_view device, winrt::hresult code,
                                   std::string_view reason);

/// The error of every use of a closed capture.
winrt::hresult_error closedError(std::string_view operation, std::string_view device);

} // namespace Platform::Shared
