#pragma once

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/HresultError.h"

#include <string>

/// How the hub logs a platform failure: its text, a blank, and its code in signed decimal. UTF-8.
inline std::string describePlatformError(const winrt::hresult_error& error) {
    return Halden::toUtf8(error.message()) + " " + std::to_string(error.code());
}
