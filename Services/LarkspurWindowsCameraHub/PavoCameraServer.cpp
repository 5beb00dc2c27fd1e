#include "Services/LarkspurWindowsCameraHub/PavoCameraServer.h"

#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"

#include <string>

namespace {

constexpr char messageDelimiter = 0;
constexpr std::size_t imageRouteLength = 5; // "/res/"

/// Stands for nothing: this listener makes its own connections, which have handlers of their own.
std::string noReply(std::string) { return {}; }

} // namespace

PavoCameraServer::PavoCameraServer(quint16 port, QObject* parent)
    : TCPServer(port, parent, noReply, messageDelimiter), cameraServer(std::make_shared<CameraServer>()) {}

void PavoCameraServer::handleImageRequest(HttpRequest* request, HttpResponse* response) {
    if (request->method != "GET")
        return;
    const std::string id = request->path.substr(imageRouteLength);
    const SharedBytes image = cameraServer->shareImage(id);
    if (image && !image->empty()) {
        response->setContentType("image/png");
        response->setStatus(200);
        response->setContentLength(image->size());
        response->sendHeaders();
        response->write(image);
    } else {
        response->sendError(404, "Image does not exist");
    }
    // After sendError too, although that has ended the response: clients know the terminator that it sends
    // once more.
    response->finish();
}

void PavoCameraServer::incomingConnection(qintptr socketDescriptor) {
    auto* client = new PavoCameraClient(socketDescriptor, cameraServer); // deletes itself when it disconnects
    // By text, as the slot is TCPClient's own.
    connect(this, SIGNAL(notificationAvailable(QByteArray)), client, SLOT(incomingNotification(QByteArray)));
    connect(client, &TCPClient::clientDisconnecting, this, &PavoCameraServer::onClientDisconnecting);
}

void PavoCameraServer::onClientDisconnecting(qintptr socketDescriptor) {
    cameraServer->cancelRedirectDiagnostics(static_cast<int>(socketDescriptor));
}
