#include "Services/LarkspurWindowsCameraHub/Listeners.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/HresultError.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <exception>
#include <string>

namespace {

void logLackOfDescriptors(const QTcpServer& server) {
    QObject::connect(&server, &QTcpServer::acceptError, [port = server.serverPort()] {
        LOG4CXX_WARN(serviceLogger(), "No descriptor is left for new connections on port "
                                          << port << ": clients wait until some are free");
    });
}

} // namespace

Listeners::Listeners(quint16 rpcPort, quint16 httpPort, QObject* parent) {
    try {
        build(rpcPort, httpPort, parent);
    } catch (const winrt::hresult_error& error) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an error: " << Halden::toUtf8(error.message()));
    } catch (const std::exception& error) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an error: " << error.what());
    } catch (...) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an unknown error");
    }
}

void Listeners::build(quint16 rpcPort, quint16 httpPort, QObject* parent) {
    rpcServer = std::make_unique<PavoCameraServer>(rpcPort, parent);
    httpServer = std::make_unique<HttpServer>(httpPort, parent);
    logLackOfDescriptors(*rpcServer);
    logLackOfDescriptors(*httpServer);
    const auto imageRoute = [this](HttpRequest* request, HttpResponse* response) {
        rpcServer->handleImageRequest(request, response);
    };
    std::string pattern = "/res/";
    pattern += ".*";
    httpServer->addRoute(QString::fromLatin1(pattern.c_str()), imageRoute);
}
