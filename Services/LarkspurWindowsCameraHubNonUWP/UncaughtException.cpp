#include "Services/LarkspurWindowsCameraHubNonUWP/UncaughtException.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/HresultError.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace {

std::string describe(const winrt::hresult_error& error) {
    std::array<char, 32> code{};
    std::snprintf(code.data(), code.size(), " %d (0x%08x)", error.code(), static_cast<std::uint32_t>(error.code()));
    return Halden::toUtf8WithReplacements(error.message()) + code.data();
}

} // namespace

std::string describeUncaughtException() {
    try {
        throw;
    } catch (const Halden::HaldenExceptionBase& error) {
        return error.getDescriptionUtf8();
    } catch (const winrt::hresult_error& error) {
        return describe(error);
    } catch (...) {
        return {};
    }
}
