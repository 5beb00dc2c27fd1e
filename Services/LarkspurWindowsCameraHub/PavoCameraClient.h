#pragma once

#include "Framework/CXX/Network/TCPClient.h"
#include "Services/LarkspurWindowsCameraHub/CameraServer.h"
#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"

#include <json/value.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

/// One connection on the RPC port: takes complete messages, dispatches them by method name and writes one
/// reply for each. Keeps the camera of its latest capture open. Main thread.
class PavoCameraClient : public TCPClient {
public:
    PavoCameraClient(qintptr socketDescriptor, std::shared_ptr<CameraServer> cameraServer);

    /// One message in, one reply out, with a line feed at its end. Only a ServiceException becomes a reply;
    /// every other exception leaves, and ends the process.
    std::string messageHandler(std::string message);

private:
    /// Each is given the whole request and returns the value of "result".
    Json::Value discoverHandler(const Json::Value& request);
    Json::Value captureHandler(const Json::Value& request);
    Json::Value redirectDiagnosticsHandler(const Json::Value& request);
    Json::Value versionHandler(const Json::Value& request);

    /// The reply to a request that has been parsed.
    std::string respond(const Json::Value& request);

    std::map<std::string, std::function<Json::Value(const Json::Value&)>> handlers;
    std::shared_ptr<CameraServer> cameraServer;
    std::shared_ptr<ConnectedCamera> camera; // empty until the first capture
};
