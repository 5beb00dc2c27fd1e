#pragma once

#include <CameraHubClient/CaptureRequest.h>
#include <json/value.h>

#include <cstdint>
#include <string>

namespace CameraHub {

// What is sent. Some requests would end the hub or stop it for good: the values are checked here, and each function
// throws std::invalid_argument for one that no hub should get.

/// A message, with its NUL.
std::string message(std::int64_t id, const char* method, const Json::Value& parameters);

Json::Value captureParameters(const CaptureRequest& request);
Json::Value redirectionParameters(const std::string& path);

/// The request for an image, with the empty line behind it.
std::string imageRequest(const std::string& host, std::uint16_t port, const std::string& imageId);

} // namespace CameraHub
