#include "Services/LarkspurWindowsCameraHub/ServiceParameters.h"

#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>

namespace {

using Halden::System::RegistryFile;
using Halden::System::RegistryKey;
using Halden::System::RegistryType;

using Number = std::array<std::uint8_t, 4>; // low byte first

std::int32_t asInteger(const Number& bytes) {
    std::uint32_t integer = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        integer = integer << 8 | bytes[i];
    return std::bit_cast<std::int32_t>(integer);
}

// The value's bytes, in front of the default's where there are fewer; the default without such a value.
std::int32_t readInteger(const char* name, RegistryType type, Number bytes) {
    if (const std::shared_ptr<const RegistryKey> key = openParametersKey())
        key->read(name, type, bytes.data(), bytes.size());
    return asInteger(bytes);
}

} // namespace

std::shared_ptr<const RegistryKey> openParametersKey() {
    const std::string path =
        R"(HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\)" + applicationName() + R"(\Parameters)";
    return RegistryFile::load(RegistryFile::defaultPath()).openKey(path);
}

bool isSimulatedCrashModeEnabled() {
    // Binary on purpose: a dword of this name does not switch the mode on.
    return readInteger("SimulatedCrashModeEnabled", RegistryType::Binary, {0, 0, 0, 0}) != 0;
}

std::chrono::milliseconds appThrottleInterval() {
    constexpr Number defaultThrottle = {0x88, 0x13, 0, 0}; // 5000 ms
    constexpr std::int32_t shortestWait = 1000;            // ms
    return std::chrono::milliseconds(
        std::max(readInteger("AppThrottle", RegistryType::Dword, defaultThrottle) / 2, shortestWait));
}
