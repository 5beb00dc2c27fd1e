#include "Client/Protocol/Requests.h"

#include "Client/Protocol/Text.h"

#include <json/writer.h>

#include <stdexcept>

namespace CameraHub {

namespace {

void check(bool isFine, const char* complaint) {
    if (!isFine)
        throw std::invalid_argument(complaint);
}

/// Texts go into the message as they are; the hub takes a NUL for its end.
bool isText(const std::string& text) { return text.find('\0') == std::string::npos && isUtf8(text); }

void addExposure(Json::Value& parameters, std::chrono::microseconds exposure) {
    check(exposure.count() >= 1 && exposure <= CaptureRequest::longestExposure,
          "an exposure is at least 1 us and at most 2147483647 us");
    parameters["exposureInUs"] = static_cast<Json::Int>(exposure.count());
}

/// The hub takes the per cent from gainInPercent. What is in exposureInPercent only tells it so, unless it is 0.
void addExposure(Json::Value& parameters, Percent exposure) {
    check(exposure.value >= 0 && exposure.value <= 100, "an exposure is from 0 to 100 per cent");
    parameters["exposureInPercent"] = 1;
    parameters["gainInPercent"] = exposure.value;
}

/// Without the zone of an IPv6 address, which means something to this machine alone.
std::string hostHeader(const std::string& host, std::uint16_t port) {
    const bool isIpv6 = host.find(':') != std::string::npos;
    const std::string name = host.substr(0, host.find('%'));
    return (isIpv6 ? "[" + name + "]" : name) + ":" + std::to_string(port);
}

} // namespace

std::string message(std::int64_t id, const char* method, const Json::Value& parameters) {
    Json::Value request;
    request["jsonrpc"] = "2.0";
    request["id"] = static_cast<Json::Int64>(id);
    request["method"] = method;
    request["params"] = parameters;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, request) + '\0';
}

Json::Value captureParameters(const CaptureRequest& request) {
    check(isText(request.camera), "the uid of a camera is UTF-8 without NUL");
    check(request.settle.count() >= 0 && request.settle <= CaptureRequest::longestSettle,
          "a settle time is at least 0 ms and at most 60000 ms");
    Json::Value parameters(Json::objectValue);
    parameters["to"] = request.camera;
    parameters["exposureChangeDelayInMs"] = static_cast<Json::Int>(request.settle.count());
    std::visit([&](auto exposure) { addExposure(parameters, exposure); }, request.exposure);
    return parameters;
}

Json::Value redirectionParameters(const std::string& path) {
    check(isText(path), "a path is UTF-8 without NUL");
    check(path.find("Diagnostics") != std::string::npos, "a path for diagnostics has the word \"Diagnostics\" in it");
    Json::Value parameters(Json::objectValue);
    parameters["path"] = path;
    return parameters;
}

std::string imageRequest(const std::string& host, std::uint16_t port, const std::string& imageId) {
    check(isImageId(imageId), "an image id is the text of a GUID, as a capture gives it");
    return "GET /res/" + imageId + " HTTP/1.1\r\nHost: " + hostHeader(host, port) + "\r\nConnection: close\r\n\r\n";
}

} // namespace CameraHub
