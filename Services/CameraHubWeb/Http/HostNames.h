#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CameraHubWeb {

/// This machine's own name as the system has it, without its domain, and both with ".local".
std::vector<std::string> machineNames();

/// Whether a Host header is for this machine: an IP address, "localhost" or one of the names, with or without a port. A
/// page of another site that has its name point here would send that name.
bool isHostOurs(std::string_view header, const std::vector<std::string>& names);

/// Whether an Origin header is of the host and port that the Host header has.
bool isOriginOfHost(std::string_view origin, std::string_view host);

} // namespace CameraHubWeb
