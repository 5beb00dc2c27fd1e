#pragma once

#include "Framework/CXX/Network/HttpRequest.h"
#include "Framework/CXX/Network/HttpResponse.h"
#include "Framework/CXX/Network/HttpServer.h"
#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

/// A response with a length, as a server of this kind writes it.
inline std::string plainResponse(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\nContent-Type: text/html\r\n\r\n" +
           body;
}

/// Answers with a length and this body.
inline void respond(HttpResponse* response, const std::string& body) {
    response->setContentLength(body.size());
    response->sendHeaders();
    response->write(body);
    response->finish();
}

inline const std::string notFoundResponse = "HTTP/1.1 404 Not Found\r\nContent-Type: text/html\r\n"
                                            "Transfer-Encoding: chunked\r\n\r\n4C\r\n"
                                            "<html><title>404 Not Found</title><body><h1>404 Not Found</h1></body>"
                                            "</html>\r\n0\r\n\r\n";

/// A server on a free port, and one connection to it.
class HttpFixture : public testing::Test {
protected:
    ~HttpFixture() override {
        connection.reset();
        server.closeClients();
        // The connections use the server until they have gone.
        settleEventLoop();
    }

    void route(const char* pattern, RouteHandler handler) { server.addRoute(pattern, std::move(handler)); }

    TestConnection& connect() {
        if (!connection)
            connection = std::make_unique<TestConnection>(server.serverPort());
        return *connection;
    }

    /// Exactly what the server sends for these bytes, provided that it then reads on.
    std::string exchange(const std::string& bytes) {
        route("/end-of-test", [](HttpRequest*, HttpResponse* response) { respond(response, "end of test"); });
        connect().send(bytes + "GET /end-of-test HTTP/1.1\r\n\r\n");
        const std::string end = plainResponse("end of test");
        std::string received = connect().receiveUntil(end);
        received.resize(received.size() - std::min(received.size(), end.size()));
        return received;
    }

    HttpServer server{0, nullptr};
    std::unique_ptr<TestConnection> connection;
};
