#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"
#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <json/value.h>

#include <chrono>
#include <string>
#include <vector>

namespace CameraHubWeb {

// What the interface tells, as JSON. Any thread, as all functions here.

Json::Value cameraAsJson(const CameraHub::Camera& camera);
Json::Value camerasAsJson(const std::vector<CameraHub::Camera>& cameras);
Json::Value stillAsJson(const KeptStill& still);
Json::Value queueAsJson(const std::vector<QueueEntry>& queue);

/// Powers of two of a second, from that nearest to the shortest exposure to that nearest to the longest; none where the
/// exposure is fixed.
std::vector<std::chrono::microseconds> wholeStops(const CameraHub::Camera& camera);

/// On one line, in well-formed UTF-8: what is not becomes U+FFFD.
std::string jsonText(const Json::Value& value);

HttpResponse jsonResponse(int status, const Json::Value& value);

} // namespace CameraHubWeb
