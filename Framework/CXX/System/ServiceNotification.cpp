#include "Framework/CXX/System/ServiceNotification.h"

#include "Framework/CXX/System/EnvironmentVariable.h"

#include <systemd/sd-daemon.h>

#include <cstdint>

namespace Halden::System {

void notifyReady() { sd_notify(0, "READY=1"); }

void notifyAlive() { sd_notify(0, "WATCHDOG=1"); }

std::chrono::microseconds watchdogTime() {
    std::uint64_t time = 0;
    const bool isListening = !environmentVariableOr("NOTIFY_SOCKET", "").empty();
    if (!isListening || sd_watchdog_enabled(0, &time) <= 0)
        return {};
    return std::chrono::microseconds(time);
}

} // namespace Halden::System
