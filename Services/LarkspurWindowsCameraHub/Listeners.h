#pragma once

#include "Framework/CXX/Network/HttpServer.h"
#include "Services/LarkspurWindowsCameraHub/PavoCameraServer.h"

#include <QObject>
#include <memory>

/// The hub's two listeners, and the image route from one to the other. Main thread.
class Listeners {
public:
    /// A failure is logged and leaves empty what has not been built by then: the process goes on without it.
    Listeners(quint16 rpcPort, quint16 httpPort, QObject* parent);
    Listeners(const Listeners&) = delete;
    Listeners& operator=(const Listeners&) = delete;

    // The HTTP listener goes first: its route reaches the other one.
    std::unique_ptr<PavoCameraServer> rpcServer;
    std::unique_ptr<HttpServer> httpServer;

private:
    void build(quint16 rpcPort, quint16 httpPort, QObject* parent);
};
