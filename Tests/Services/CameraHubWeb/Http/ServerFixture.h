#pragma once

#include "Services/CameraHubWeb/Http/HttpServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

/// A server on a free port of this machine.
class ServerFixture : public testing::Test {
protected:
    /// Before it starts, a test may change them.
    CameraHubWeb::HttpServer::Settings settings{.address = "127.0.0.1", .port = 0, .tls = nullptr, .limits = {}};

    void serve(CameraHubWeb::HttpHandler handler) {
        _server = std::make_unique<CameraHubWeb::HttpServer>(settings, std::move(handler));
        port = _server->port();
    }

    /// Answers each request with this text.
    void serveText(const std::string& text = "hello") {
        serve([text](const std::shared_ptr<CameraHubWeb::HttpExchange>& exchange) {
            exchange->send(CameraHubWeb::textResponse(200, "text/plain", text));
        });
    }

    void endServer() { _server.reset(); }

    std::uint16_t port = 0;

private:
    std::unique_ptr<CameraHubWeb::HttpServer> _server;
};
