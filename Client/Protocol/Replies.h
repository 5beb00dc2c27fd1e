#pragma once

#include <CameraHubClient/Camera.h>
#include <CameraHubClient/Still.h>
#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CameraHub {

// What is received. Each function throws ProtocolError for what is not as the hub's protocol has it.

/// The result in a message, without its NUL. Throws MessageRejected and MethodFailed where the hub answers so.
Json::Value resultOf(std::string_view reply, std::int64_t id);

std::string versionFrom(const Json::Value& result);
std::vector<Camera> camerasFrom(const Json::Value& result);
/// Throws CaptureRefused where the hub answers so.
Capture captureFrom(const Json::Value& result);
void checkRedirection(const Json::Value& result);

} // namespace CameraHub
