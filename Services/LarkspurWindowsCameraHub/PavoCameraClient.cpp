#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Json/HaldenPlainWriter.h"
#include "Framework/CXX/Json/MessageParsing.h"
#include "Framework/CXX/Json/ValueReading.h"
#include "Services/LarkspurWindowsCameraHub/Exceptions.h"
#include "Services/LarkspurWindowsCameraHub/ProtocolNames.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

using Halden::RunCatch;
using Halden::LarkspurWindowsCameraHub::Exceptions::MethodNotSupported;
using Halden::LarkspurWindowsCameraHub::Exceptions::ServiceException;

namespace {

constexpr char messageDelimiter = 0;
constexpr int parseErrorCode = -32700;

enum CaptureFailure { UnknownCamera = 1, CameraDisconnected = 2, UnknownCaptureError = 3 };

Json::Value captureFailure(CaptureFailure code, const char* message) {
    Json::Value result;
    result[ProtocolNames::code] = static_cast<int>(code);
    result[ProtocolNames::message] = message;
    return result;
}

const Json::Value& parameter(const Json::Value& request, const char* name) {
    return Halden::member(request, ProtocolNames::params, name);
}

/// Toward zero; beyond the range of an int its nearer end.
int truncated(double value) {
    return static_cast<int>(
        std::clamp<double>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::string asJson(const Json::Value& value) { return Json::HaldenPlainWriter().write(value); }

// Replies are put together from texts, so that a long result is not taken apart for it. Their members stand in the byte
// order of the names.

void appendMember(std::string& object, const char* name, std::string_view value) {
    object += object.empty() ? "{\"" : ",\"";
    object += name;
    object += "\":";
    object += value;
}

const std::string& protocolVersion() {
    static const std::string version = asJson(ProtocolNames::jsonrpcVersion);
    return version;
}

std::string resultReply(const Json::Value& id, const std::string& result) {
    constexpr std::size_t sizeOfTheRest = 64; // bytes, as a rule
    std::string reply;
    reply.reserve(result.size() + sizeOfTheRest);
    appendMember(reply, ProtocolNames::id, asJson(id));
    appendMember(reply, ProtocolNames::jsonrpc, protocolVersion());
    appendMember(reply, ProtocolNames::result, result);
    reply += "}\n";
    return reply;
}

std::string errorReply(const Json::Value& id, const char* message) {
    Json::Value error;
    error[ProtocolNames::message] = message;
    std::string reply;
    appendMember(reply, ProtocolNames::error, asJson(error));
    appendMember(reply, ProtocolNames::id, asJson(id));
    appendMember(reply, ProtocolNames::jsonrpc, protocolVersion());
    reply += "}\n";
    return reply;
}

// A member that is missing reads as 0. The default stands in only for one that cannot be converted.

int readExposureInUs(int defaultValue, const Json::Value& request) {
    return RunCatch(defaultValue, [&] { return Halden::asInt(parameter(request, ProtocolNames::exposureInUs)); });
}

int readExposureChangeDelay(int defaultValue, const Json::Value& request) {
    return RunCatch(defaultValue,
                    [&] { return Halden::asInt(parameter(request, ProtocolNames::exposureChangeDelayInMs)); });
}

int readExposureInPercent(int defaultValue, const Json::Value& request) {
    return RunCatch(defaultValue,
                    [&] { return truncated(Halden::asDouble(parameter(request, ProtocolNames::exposureInPercent))); });
}

} // namespace

PavoCameraClient::PavoCameraClient(qintptr descriptor, std::shared_ptr<CameraServer> server)
    : TCPClient(
          descriptor, [this](std::string message) { return messageHandler(std::move(message)); }, messageDelimiter),
      cameraServer(std::move(server)) {
    using std::placeholders::_1;
    handlers[ProtocolNames::cameraDiscover] = std::bind(&PavoCameraClient::discoverHandler, this, _1);
    handlers[ProtocolNames::cameraCapture] = std::bind(&PavoCameraClient::captureHandler, this, _1);
    handlers[ProtocolNames::cameraRedirectDiagnostics] =
        std::bind(&PavoCameraClient::redirectDiagnosticsHandler, this, _1);
    handlers[ProtocolNames::cameraVersion] = std::bind(&PavoCameraClient::versionHandler, this, _1);
}

std::string PavoCameraClient::messageHandler(std::string message) {
    const log4cxx::LoggerPtr logger = communicationLogger();
    LOG4CXX_DEBUG(logger, "--> " << message);
    LOG4CXX_DEBUG(logger, "parsing...");
    Json::Value request;
    std::string parserReport;
    std::string reply;
    if (Halden::parseMessage(message, request, parserReport)) {
        reply = respond(request);
    } else {
        Json::Value response;
        response[ProtocolNames::jsonrpc] = ProtocolNames::jsonrpcVersion;
        response[ProtocolNames::code] = parseErrorCode;
        response[ProtocolNames::message] = "Parse Error";
        LOG4CXX_ERROR(logger, "<-- Error parsing [" << message << "]:" << parserReport);
        reply = Halden::writeMessage(response);
    }
    LOG4CXX_DEBUG(logger, "<-- " << reply);
    return reply;
}

std::string PavoCameraClient::respond(const Json::Value& request) {
    // Outside the guard: a request that has no members, or a method that is no text, ends the process.
    const Json::Value& id = Halden::member(request, ProtocolNames::id);
    const std::string method = Halden::asString(Halden::member(request, ProtocolNames::method));
    try {
        const auto handler = handlers.find(method);
        if (handler == handlers.end())
            throw MethodNotSupported(method);
        LOG4CXX_DEBUG(communicationLogger(), "handling method -- " << method);
        const auto write = [&] { return asJson(handler->second(request)); };
        // All that its handler tells depends on the cameras alone, and takes long to make where there are many.
        return resultReply(id, method == ProtocolNames::cameraDiscover ? *cameraServer->textOfCameras(write) : write());
    } catch (const ServiceException& exception) {
        LOG4CXX_ERROR(deviceLogger(), exception.what());
        return errorReply(id, exception.what());
    }
}

Json::Value PavoCameraClient::discoverHandler(const Json::Value&) {
    Json::Value cameras(Json::arrayValue);
    for (const CameraDescription& description : cameraServer->discover()) {
        Json::Value entry;
        entry[ProtocolNames::uid] = description.uid;
        entry[ProtocolNames::make] = description.make;
        entry[ProtocolNames::model] = description.model;
        entry[ProtocolNames::resolutionX] = description.resolutionX;
        entry[ProtocolNames::resolutionY] = description.resolutionY;
        entry[ProtocolNames::exposureMinValueInUs] = description.exposureMinValueInUs;
        entry[ProtocolNames::exposureMaxValueInUs] = description.exposureMaxValueInUs;
        cameras.append(entry);
    }
    return cameras;
}

Json::Value PavoCameraClient::captureHandler(const Json::Value& request) {
    const std::string uid = Halden::asString(parameter(request, ProtocolNames::to));
    const int exposureInUs = readExposureInUs(0, request);
    const double exposureInPercent = readExposureInPercent(0, request);
    const double gain = Halden::asDouble(parameter(request, ProtocolNames::gainInPercent));
    const int delay = readExposureChangeDelay(500, request);

    if (uid.empty())
        return captureFailure(UnknownCamera, "Unknown camera");
    camera = cameraServer->getCamera(uid);
    if (!camera)
        return captureFailure(CameraDisconnected, "Camera Disconnected");

    const auto captured = cameraServer->captureImage(camera, exposureInUs, exposureInPercent, truncated(gain), delay);
    if (captured.imageId.empty())
        return captureFailure(UnknownCaptureError, "Unknown capture error");
    Json::Value result;
    result[ProtocolNames::resid] = captured.imageId;
    result[ProtocolNames::exposureInUs] = static_cast<Json::Int64>(captured.exposure.count());
    return result;
}

Json::Value PavoCameraClient::redirectDiagnosticsHandler(const Json::Value& request) {
    const std::string path = Halden::asString(parameter(request, ProtocolNames::path));
    cameraServer->redirectDiagnostics(static_cast<int>(socketDescriptor), path);
    return 0;
}

Json::Value PavoCameraClient::versionHandler(const Json::Value&) { return applicationVersion(); }
