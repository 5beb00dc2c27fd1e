#pragma once

#include "Framework/CXX/Network/HttpRequest.h"
#include "Framework/CXX/Network/HttpResponse.h"
#include "Framework/CXX/Network/TCPServer.h"
#include "Services/LarkspurWindowsCameraHub/CameraServer.h"

#include <memory>

/// The listener of the RPC port; owner of the one camera service, of which each connection has a share.
/// Main thread.
class PavoCameraServer : public TCPServer {
public:
    /// Listens, and starts the search for cameras. A port that is taken is not reported.
    PavoCameraServer(quint16 port, QObject* parent);

    /// The handler of the image route, for paths that begin with "/res/": answers a GET with the PNG of the
    /// id behind that, or with 404. Any other method gets no answer at all.
    void handleImageRequest(HttpRequest* request, HttpResponse* response);

protected:
    void incomingConnection(qintptr socketDescriptor) override;

private:
    /// Ends the diagnostics redirection of the client that goes, if it has one.
    void onClientDisconnecting(qintptr socketDescriptor);

    std::shared_ptr<CameraServer> cameraServer;
};
