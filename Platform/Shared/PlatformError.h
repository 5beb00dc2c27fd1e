#pragma once

#include "Platform/Interface/HresultError.h"

#include <string_view>

namespace Platform::Shared {

/// "OPERATION on DEVICE: reason" with that code. All texts are UTF-8.
winrt::hresult_error platformError(std::string_view operation, std::string_view device, winrt::hresult code,
                                   std::string_view reason);

} // namespace Platform::Shared
