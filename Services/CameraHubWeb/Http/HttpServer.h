#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace CameraHubWeb {

/// What a client may take up.
struct ServerLimits {
    std::size_t headBytes = 16U * 1024;
    std::size_t targetBytes = 4U * 1024;
    std::size_t bodyBytes = 64U * 1024;
    int connections = 1024;
    /// Of one address; those of this machine are not counted.
    int connectionsOfAddress = 256;
    /// For a head and a body to come completely, from their first byte; and for a TLS handshake.
    std::chrono::milliseconds requestTime = std::chrono::seconds(10);
    /// For a client to take anything of what it is sent.
    std::chrono::milliseconds writeTime = std::chrono::seconds(30);
    /// Between two requests of a connection, and before the first.
    std::chrono::milliseconds idleTime = std::chrono::seconds(60);
};

/// PEM files.
struct TlsFiles {
    std::string certificate;
    std::string key;
};

/// Serves HTTP/1.1, on threads of its own.
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
