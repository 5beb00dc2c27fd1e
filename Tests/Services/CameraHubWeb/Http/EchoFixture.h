#pragma once

#include "Tests/Services/CameraHubWeb/Http/RawClient.h"
#include "Tests/Services/CameraHubWeb/Http/ServerFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

/// A server that sends each request's body back.
class EchoFixture : public ServerFixture {
protected:
    void serveEcho() {
        serve([](const std::shared_ptr<CameraHubWeb::HttpExchange>& exchange) {
            exchange->send(CameraHubWeb::textResponse(200, "text/plain", exchange->request().body));
        });
    }

    /// Sends it and expects this problem, and then the connection's end.
    void expectProblem(const std::string& request, int status, const std::string& kind) {
        RawClient client(port);
        client.send(request);
        const RawAnswer answer = client.receiveAnswer();
        EXPECT_EQ(answer.status, status) << answer.body;
        EXPECT_THAT(answer.body, testing::HasSubstr("urn:camera-hub:problem:" + kind));
        EXPECT_EQ(answer.header("content-type"), "application/problem+json");
        EXPECT_EQ(answer.header("connection"), "close");
        EXPECT_EQ(client.receiveAll(), "");
    }
};
