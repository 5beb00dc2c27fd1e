#include "Tests/Services/CameraHubWeb/Http/RawClient.h"
#include "Tests/Services/CameraHubWeb/Http/ScriptedStream.h"
#include "Tests/Services/CameraHubWeb/Http/ServerFixture.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

using namespace CameraHubWeb;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string get = "GET / HTTP/1.1\r\nHost: x\r\n\r\n";

class HttpStreamTest : public ServerFixture {
protected:
    void serveStream() {
        serve([this](const std::shared_ptr<HttpExchange>& exchange) {
            exchange->stream({200, {{"Content-Type", "text/event-stream"}}, nullptr, 0, 0}, stream);
        });
    }

    bool hasEndedOnce() {
        return waitUntil([this] { return stream->ends() > 0; }) && stream->ends() == 1;
    }

    const std::shared_ptr<ScriptedStream> stream = std::make_shared<ScriptedStream>();
};

TEST_F(HttpStreamTest, PiecesComeAsChunksAndTheConnectionGoesOn) {
    serveStream();
    RawClient client(port);
    client.send(get);
    EXPECT_THAT(client.receiveUntil("\r\n\r\n"), HasSubstr("Transfer-Encoding: chunked\r\n"));
    stream->say("hello");
    EXPECT_EQ(client.receiveUntil("hello\r\n"), "5\r\nhello\r\n");
    stream->say(""); // would be the last chunk
    stream->say(std::string(300, 'a'));
    EXPECT_EQ(client.receiveUntil("a\r\n"), "12c\r\n" + std::string(300, 'a') + "\r\n");
    stream->give(nullptr);
    EXPECT_EQ(client.receiveUntil("\r\n\r\n"), "0\r\n\r\n");
    EXPECT_TRUE(hasEndedOnce());
    client.send("GET /%zz HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().status, 400);
}

TEST_F(HttpStreamTest, AnOldClientGetsThePiecesAsTheyAre) {
    serveStream();
    RawClient client(port);
    client.send("GET / HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    const std::string head = client.receiveUntil("\r\n\r\n");
    EXPECT_THAT(head, HasSubstr("Connection: close\r\n"));
    EXPECT_THAT(head, Not(HasSubstr("Transfer-Encoding")));
    stream->say("hel");
    stream->say("lo");
    stream->give(nullptr);
    EXPECT_EQ(client.receiveAll(), "hello");
}

TEST_F(HttpStreamTest, HeadAsksForNoPiece) {
    serveStream();
    RawClient client(port);
    client.send("HEAD / HTTP/1.1\r\nHost: x\r\n\r\nHEAD /%zz HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer(true).status, 200);
    EXPECT_EQ(client.receiveAnswer(true).status, 400);
    EXPECT_EQ(stream->asked(), 0);
    EXPECT_TRUE(hasEndedOnce());
}

TEST_F(HttpStreamTest, APieceMayComeOnAnyThread) {
    serveStream();
    RawClient client(port);
    client.send(get);
    std::thread other([this] {
        for (int i = 0; i < 100; ++i)
            stream->say("piece");
        stream->give(nullptr);
    });
    EXPECT_EQ(client.receiveAnswer().body.size(), 500U);
    other.join();
}

TEST_F(HttpStreamTest, AClientThatGoesBetweenPiecesIsNoticed) {
    serveStream();
    RawClient client(port);
    client.send(get);
    stream->say("hello");
    client.receiveUntil("hello");
    ASSERT_TRUE(waitUntil([this] { return stream->asked() == 2; }));
    client.close();
    EXPECT_TRUE(hasEndedOnce());
    stream->say("too late");
}

TEST_F(HttpStreamTest, NoPieceIsAskedForBeforeTheOneBeforeHasGone) {
    serveStream();
    RawClient client(port);
    client.send(get);
    const std::string large(20'000'000, 'a'); // more than the system takes for a client that does not read
    stream->say(large);
    client.receiveUntil("\r\n\r\n");
    // Other clients are served meanwhile, and their pieces pass this one's by.
    EXPECT_EQ(askOnce(port, "GET /%zz HTTP/1.1\r\nHost: x\r\n\r\n").status, 400);
    EXPECT_EQ(stream->asked(), 1);
    EXPECT_EQ(client.receiveUntil("a\r\n").size(), std::string("1312d00\r\n").size() + large.size() + 2);
    EXPECT_TRUE(waitUntil([this] { return stream->asked() == 2; }));
}

TEST_F(HttpStreamTest, AClientThatNeverReadsIsDropped) {
    settings.limits.writeTime = std::chrono::milliseconds(100);
    serveStream();
    RawClient client(port);
    client.send(get);
    stream->say(std::string(20'000'000, 'a'));
    EXPECT_TRUE(hasEndedOnce());
    EXPECT_EQ(stream->asked(), 1);
}

TEST_F(HttpStreamTest, TheServersEndEndsTheStream) {
    serveStream();
    RawClient client(port);
    client.send(get);
    stream->say("hello");
    ASSERT_TRUE(waitUntil([this] { return stream->asked() == 2; }));
    const auto ready = stream->takeReady();
    endServer();
    EXPECT_TRUE(hasEndedOnce());
    ready(nullptr); // what was promised may still come
}

TEST_F(HttpStreamTest, AStreamForAClientThatHasGoneEndsAtOnce) {
    std::shared_ptr<HttpExchange> kept;
    std::atomic<bool> isKept = false;
    std::atomic<bool> isGone = false;
    serve([&](const std::shared_ptr<HttpExchange>& exchange) {
        kept = exchange;
        exchange->whenGone([&isGone] { isGone = true; });
        isKept = true;
    });
    {
        RawClient client(port);
        client.send(get);
        ASSERT_TRUE(waitUntil([&] { return isKept.load(); }));
    }
    ASSERT_TRUE(waitUntil([&] { return isGone.load(); }));
    kept->stream({}, stream);
    EXPECT_EQ(stream->ends(), 1);
    EXPECT_EQ(stream->asked(), 0);
}

} // namespace
