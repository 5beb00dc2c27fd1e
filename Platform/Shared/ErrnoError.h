#pragma once

#include "Platform/Interface/HresultError.h"

#include <string_view>

namespace Platform::Shared {

/// The platform's code for an error number of the system.
winrt::hresult codeOfErrno(int error);

/// "OPERATION on DEVICE: reason", with the code of that error number. Both texts are UTF-8.
winrt::hresult_error errnoError(std::string_view operation, std::string_view device, int error);

} // namespace Platform::Shared
