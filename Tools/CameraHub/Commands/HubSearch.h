#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace CommandLine {

/// A hub on the network, as it announces itself.
struct FoundHub {
    std::string name;
    std::string host;
    std::uint16_t port = 0;
    /// With the interface where an address needs it: "fe80::1%eth0".
    std::set<std::string> addresses;
};

/// Asks the Avahi daemon of this machine for services of type _camera-hub._tcp, until it has told all that it knows and
/// what came in meanwhile, or the time is over; in the order of names. `check` is called about ten times a second, and
/// may throw. Throws Failure where there is no daemon.
std::vector<FoundHub> searchHubs(std::chrono::milliseconds time, const std::function<void()>& check);

} // namespace CommandLine
