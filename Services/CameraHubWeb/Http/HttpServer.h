#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Services/CameraHubWeb/Http/ServerLimits.h"
#include "Services/CameraHubWeb/Http/TlsFiles.h"

#include <cstdint>
#include <memory>
#include <string>

namespace CameraHubWeb {

/// Serves HTTP/1.1, on a thread of its own.
class HttpServer {
public:
    struct Settings {
        /// An IPv4 or IPv6 address without brackets.
        std::string address = "127.0.0.1";
        /// 0: one that is free.
        std::uint16_t port = 8080;
        /// Null: without TLS.
        std::shared_ptr<const TlsFiles> tls;
        ServerLimits limits;
    };

    /// Listens. Throws std::runtime_error, its text one line for people, where the port cannot be had or the
    /// certificate or key cannot be used.
    HttpServer(const Settings& settings, HttpHandler handler);

    /// Ends all connections.
    ~HttpServer();

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The port that it listens on.
    std::uint16_t port() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> _implementation;
};

} // namespace CameraHubWeb
