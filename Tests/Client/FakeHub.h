#pragma once

#include "Tests/Client/ScriptedServer.h"

#include <CameraHubClient/CameraHubClient.h>

#include <chrono>
#include <string>
#include <string_view>
#include <utility>

/// Both ports of a hub that answers what a test tells it to.
struct FakeHub {
    explicit FakeHub(std::string hostOfBoth = "127.0.0.1")
        : host(std::move(hostOfBoth)), messages(std::string(1, '\0'), host), images("\r\n\r\n", host) {}

    CameraHub::Address address() const { return {host, messages.port(), images.port()}; }
    CameraHub::CameraHubClient connect(const CameraHub::Options& options = {}) const {
        return CameraHub::CameraHubClient(address(), options);
    }

    /// A message from the hub, as it ends them.
    static std::string reply(std::string text) { return std::move(text) + "\n\r\n" + '\0'; }

    /// The reply to a client's nth message.
    static std::string result(std::string_view value, int id = 1) {
        return reply(R"({"id":)" + std::to_string(id) + R"(,"jsonrpc":"2.0","result":)" + std::string(value) + "}");
    }

    static std::string captured(std::string_view imageId, int id = 1) {
        return result(R"({"exposureInUs":15625,"resid":")" + std::string(imageId) + "\"}", id);
    }

    static std::string image(std::string_view bytes) {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes.size()) +
               "\r\nContent-Type: image/png\r\n\r\n" + std::string(bytes);
    }

    static constexpr std::string_view oneId = "0c2a6b5e-7f3d-4c1a-9a55-52c1d0e4b7f6";
    static constexpr std::string_view anotherId = "5d0e7b0c-31d8-4f0e-8f0f-6c3f6a0f3b52";
    static constexpr std::string_view png = "\x89PNG\r\n\x1a\n and the rest";
    static constexpr std::string_view headOfNoImage = "HTTP/1.1 404 Image does not exist\r\nContent-Type: text/html\r\n"
                                                      "Transfer-Encoding: chunked\r\n\r\n";
    static constexpr std::string_view bodyOfNoImage =
        "62\r\n<html><title>404 Image does not exist</title><body><h1>404 Image does not exist</h1></body></html>\r\n"
        "0\r\n\r\n0\r\n\r\n";
    static std::string noImage() { return std::string(headOfNoImage) + std::string(bodyOfNoImage); }

    std::string host;
    ScriptedServer messages;
    ScriptedServer images;
};
