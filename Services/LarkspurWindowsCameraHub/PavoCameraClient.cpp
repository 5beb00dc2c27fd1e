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
    LOG4CXX_DEBUG(communicationLogger(), "--> " << message);
    Json::Value request;
    Json::Value response;
    response[ProtocolNames::jsonrpc] = ProtocolNames::jsonrpcVersion;

    LOG4CXX_DEBUG(communicationLogger(), "parsing...");
    std::string parserReport;
    if (Halden::parseMessage(message, request, parserReport)) {
        respond(request, response);
    } else {
        response[ProtocolNames::code] = parseErrorCode;
        response[ProtocolNames::message] = "Parse Error";
        LOG4CXX_ERROR(communicationLogger(), "<-- Error parsing [" << message << "]:" << parserReport);
    }

    std::string reply = Halden::writeMessage(response);
    LOG4CXX_DEBUG(communicationLogger(), "<-- " << reply);
    return reply;
}

void PavoCameraClient::respond(const Json::Value& request, Json::Value& response) {
    // Outside the guard: a request that has no members, or a method that is no text, ends the process.
    response[ProtocolNames::id] = Halden::member(request, ProtocolNames::id);
    const std::string method = Halden::asString(Halden::member(request, ProtocolNames::method));
    try {
        const auto handler = handlers.find(method);
        if (handler == handlers.end())
            throw MethodNotSupported(method);
        LOG4CXX_DEBUG(communicationLogger(), "handling method -- " << method);
        response[ProtocolNames::result] = handler->second(request);
    } catch (const ServiceException& exception) {
        LOG4CXX_ERROR(deviceLogger(), exception.what());
        Json::Value error;
        error[ProtocolNames::message] = exception.what();
        response[ProtocolNames::error] = error;
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
