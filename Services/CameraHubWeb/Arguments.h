#pragma once

#include "Services/CameraHubWeb/Http/HttpServer.h"

#include <CameraHubClient/Address.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CameraHubWeb {

/// The command line is wrong; what() is one line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the program was started with.
struct Arguments {
    /// An IPv4 or IPv6 address without brackets.
    std::string address = "127.0.0.1";
    std::uint16_t port = 8080;
    CameraHub::Address hub;
    std::optional<TlsFiles> tls;
    /// Empty: none.
    std::string tokenFile;
    /// It may listen beyond this machine without a token.
    bool isOpen = false;
    /// Names that clients may know this program by.
    std::vector<std::string> names;
    std::size_t keptStills = 32;
    /// In MiB.
    std::size_t keptMemory = 256;
    std::chrono::milliseconds idleTime = std::chrono::minutes(1);
    int connections = 1024;
};

/// None: only help or the version was asked for, and printed. Throws UsageError.
std::optional<Arguments> parseArguments(int count, const char* const* texts);

/// Whether only this machine reaches the address.
bool isOfThisMachine(const std::string& address);

} // namespace CameraHubWeb
