#include "Tests/Services/CameraHubWeb/Http/EchoFixture.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

using namespace CameraHubWeb;
using testing::HasSubstr;

namespace {

using Clock = std::chrono::steady_clock;

class RequestRefusalTest : public EchoFixture {};

TEST_F(RequestRefusalTest, AChunkedBodyIsPutTogether) {
    serveEcho();
    RawClient client(port);
    client.send("POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: Chunked\r\n\r\n3;a=b\r\nabc\r\n");
    client.send("A\r\n0123456789\r\n0\r\nAuthorization: trailer\r\n\r\nPOST / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().body, "abc0123456789");
    EXPECT_EQ(client.receiveAnswer().status, 200);
}

TEST_F(RequestRefusalTest, ABodyOfTheLimitIsTakenAndNoByteMore) {
    settings.limits.bodyBytes = 1000;
    serveEcho();
    const std::string head = "POST / HTTP/1.1\r\nHost: x\r\n";
    const std::string full(1000, 'a');
    EXPECT_EQ(askOnce(port, head + "Content-Length: 1000\r\n\r\n" + full).body, full);
    EXPECT_EQ(askOnce(port, head + "Transfer-Encoding: chunked\r\n\r\n3e8\r\n" + full + "\r\n0\r\n\r\n").body, full);
    expectProblem(head + "Content-Length: 1001\r\n\r\n" + full + "a", 413, "too-large");
    expectProblem(head + "Transfer-Encoding: chunked\r\n\r\n3e8\r\n" + full + "\r\n1\r\na\r\n0\r\n\r\n", 413,
                  "too-large");
}

TEST_F(RequestRefusalTest, AClientThatSendsFarTooMuchSeesWhy) {
    serveEcho();
    RawClient client(port);
    client.send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 20000000\r\n\r\n");
    client.send(std::string(20'000'000, 'a'));
    EXPECT_EQ(client.receiveAnswer().status, 413);
    EXPECT_EQ(client.receiveAll(), "");
}

TEST_F(RequestRefusalTest, AnEndlessLineOfAChunkedBodyIsRefused) {
    serveEcho();
    expectProblem("POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n1;" + std::string(100'000, 'a'), 400,
                  "invalid-request");
}

TEST_F(RequestRefusalTest, ALongTargetAndALongHeadAreToldApart) {
    serveEcho();
    const std::string tail = " HTTP/1.1\r\nHost: x\r\n\r\n";
    EXPECT_EQ(askOnce(port, "GET /" + std::string(4095, 'a') + tail).status, 200);
    expectProblem("GET /" + std::string(4096, 'a') + tail, 414, "too-large");
    expectProblem("GET /" + std::string(100'000, 'a'), 414, "too-large");
    expectProblem("GET / HTTP/1.1\r\nHost: x\r\nA: " + std::string(100'000, 'a'), 431, "too-large");
    expectProblem("GET / HTTP/1.1\r\nHost: x\r\nA: " + std::string(16'384, 'a') + "\r\n\r\n", 431, "too-large");
    EXPECT_EQ(askOnce(port, "GET / HTTP/1.1\r\nHost: x\r\nA: " + std::string(16'000, 'a') + "\r\n\r\n").status, 200);
}

TEST_F(RequestRefusalTest, AnEndlessSupplyOfHeadersIsRefused) {
    serveEcho();
    std::string request = "GET / HTTP/1.1\r\nHost: x\r\n";
    for (int i = 0; i < 5000; ++i)
        request += "A" + std::to_string(i) + ": b\r\n";
    expectProblem(request, 431, "too-large");
}

TEST_F(RequestRefusalTest, BytesThatTrickleDoNotProlongARequest) {
    settings.limits.requestTime = std::chrono::milliseconds(300);
    serveEcho();
    for (const std::string begin :
         {"GET / HTTP/1.1\r\nA: ", "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 99\r\n\r\n"}) {
        RawClient client(port);
        client.send(begin);
        const auto end = Clock::now() + patience;
        while (client.sendWhatGoes("a") == 1 && Clock::now() < end && !client.hasReceived())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const RawAnswer answer = client.receiveAnswer();
        EXPECT_EQ(answer.status, 408);
        EXPECT_THAT(answer.body, HasSubstr("urn:camera-hub:problem:request-timeout"));
    }
}

TEST_F(RequestRefusalTest, AClientThatWaitsForItIsToldToContinue) {
    serveEcho();
    RawClient client(port);
    client.send("POST / HTTP/1.1\r\nHost: x\r\nExpect: 100-Continue\r\nContent-Length: 2\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().status, 100);
    client.send("hi");
    EXPECT_EQ(client.receiveAnswer().body, "hi");
}

TEST_F(RequestRefusalTest, AClientThatDoesNotWaitIsNotToldToContinue) {
    serveEcho();
    for (const std::string head : {"POST / HTTP/1.1\r\nHost: x\r\n", "POST / HTTP/1.0\r\n"})
        EXPECT_EQ(askOnce(port, head + "Expect: 100-continue\r\nContent-Length: 2\r\n\r\nhi").body, "hi");
}

TEST_F(RequestRefusalTest, ABodyThatIsTooLargeIsRefusedBeforeItIsSent) {
    serveEcho();
    expectProblem("POST / HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nContent-Length: 65537\r\n\r\n", 413,
                  "too-large");
}

TEST_F(RequestRefusalTest, WhatFollowsARefusalIsNotHandled) {
    serveEcho();
    RawClient client(port);
    client.send("GET a HTTP/1.1\r\nHost: x\r\n\r\nGET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().status, 400);
    EXPECT_EQ(client.receiveAll(), "");
}

} // namespace
