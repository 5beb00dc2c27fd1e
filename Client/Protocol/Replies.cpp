#include "Client/Protocol/Replies.h"

#include "Client/Protocol/Text.h"

#include <CameraHubClient/Errors.h>
#include <json/reader.h>

#include <limits>
#include <memory>

namespace CameraHub {

namespace {

void check(bool isAsDocumented, const std::string& complaint) {
    if (!isAsDocumented)
        throw ProtocolError("what answers is no hub: " + complaint);
}

/// The library takes 1.0 for an integer as well, which the hub never sends.
bool isInteger(const Json::Value& value) {
    return (value.type() == Json::intValue || value.type() == Json::uintValue) && value.isInt64();
}

const Json::Value& memberOf(const Json::Value& object, const char* name) {
    check(object.isObject() && object.isMember(name), std::string("a reply lacks ") + name);
    return object[name];
}

std::string textIn(const Json::Value& object, const char* name) {
    const Json::Value& value = memberOf(object, name);
    check(value.isString(), std::string(name) + " is no text");
    return value.asString();
}

std::int64_t integerIn(const Json::Value& object, const char* name) {
    const Json::Value& value = memberOf(object, name);
    check(isInteger(value), std::string(name) + " is no integer");
    return value.asInt64();
}

int intIn(const Json::Value& object, const char* name) {
    const std::int64_t value = integerIn(object, name);
    check(value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max(),
          std::string(name) + " is beyond 32 bits");
    return static_cast<int>(value);
}

Json::Value parsed(std::string_view text) {
    check(isUtf8(text), "a reply is no UTF-8");
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    bool isJson = false;
    try {
        isJson = reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    } catch (const Json::Exception&) { // nested too deeply
        isJson = false;
    }
    check(isJson, "a reply is no JSON");
    return value;
}

std::string messageIn(const Json::Value& object) { return inOneLine(textIn(object, "message")); }

Camera cameraFrom(const Json::Value& entry) {
    Camera camera;
    camera.uid = textIn(entry, "uid");
    camera.make = textIn(entry, "make");
    camera.model = textIn(entry, "model");
    camera.resolution = {intIn(entry, "resolutionX"), intIn(entry, "resolutionY")};
    camera.shortestExposure = std::chrono::microseconds(intIn(entry, "exposureMinValueInUs"));
    camera.longestExposure = std::chrono::microseconds(intIn(entry, "exposureMaxValueInUs"));
    return camera;
}

} // namespace

Json::Value resultOf(std::string_view reply, std::int64_t id) {
    const Json::Value value = parsed(reply);
    check(textIn(value, "jsonrpc") == "2.0", "a reply is of another JSON-RPC");
    if (value.isMember("code"))
        throw MessageRejected(intIn(value, "code"), messageIn(value));
    check(integerIn(value, "id") == id, "a reply belongs to another request");
    check(value.isMember("error") != value.isMember("result"), "a reply has not one of error and result");
    if (value.isMember("error"))
        throw MethodFailed(messageIn(value["error"]));
    return value["result"];
}

std::string versionFrom(const Json::Value& result) {
    check(result.isString(), "the version is no text");
    return result.asString();
}

std::vector<Camera> camerasFrom(const Json::Value& result) {
    check(result.isArray(), "the list of cameras is none");
    std::vector<Camera> cameras;
    for (const Json::Value& entry : result)
        cameras.push_back(cameraFrom(entry));
    return cameras;
}

Capture captureFrom(const Json::Value& result) {
    check(result.isObject(), "the result of a capture is no object");
    if (result.isMember("code")) {
        const int code = intIn(result, "code");
        check(code >= CaptureRefused::noCameraNamed && code <= CaptureRefused::noImage,
              "a capture was refused with an unknown code");
        throw CaptureRefused(code, messageIn(result));
    }
    Capture capture;
    const std::int64_t exposure = integerIn(result, "exposureInUs");
    if (exposure != std::numeric_limits<std::int64_t>::min())
        capture.exposure = std::chrono::microseconds(exposure);
    capture.imageId = textIn(result, "resid");
    check(isImageId(capture.imageId), "resid is no image id");
    return capture;
}

void checkRedirection(const Json::Value& result) {
    check(isInteger(result) && result.asInt64() == 0, "the result of a redirection is not 0");
}

} // namespace CameraHub
