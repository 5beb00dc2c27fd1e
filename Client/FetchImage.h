#pragma once

#include <CameraHubClient/Address.h>
#include <CameraHubClient/Options.h>

#include <cstdint>
#include <string>
#include <vector>

namespace CameraHub {

/// The PNG file of that id, on a connection that is made for it. Throws what Connection does, ImageGone, ProtocolError
/// and, before all else, std::invalid_argument for what is no id.
std::vector<std::uint8_t> fetchImage(const std::string& imageId, const Address& address, const Options& options);

} // namespace CameraHub
