#pragma once

#include "Platform/Interface/HresultError.h"

#include <string_view>

namespace Platform::Shared {

/// "OPERATION on DEVICE: reason" with that code. All texts are UTF-8.
winrt::hresult_error platformError(std::string_view operation, std::string_view device, winrt::hresult code,
                                   std::string_view reason);

/// The error of every use of a closed capture. `cause`, UTF-8, may be empty: why it could not be used before already.
winrt::hresult_error closedError(std::string_view operation, std::string_view device, std::string_view cause = {});

} // namespace Platform::Shared
