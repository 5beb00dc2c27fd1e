#include "Services/CameraHubWeb/Http/HttpServer.h"

#include "Tests/Services/CameraHubWeb/Http/RawClient.h"
#include "Tests/Services/CameraHubWeb/Http/ServerFixture.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace CameraHubWeb;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Pair;

namespace {

const std::string get = "GET / HTTP/1.1\r\nHost: x\r\n\r\n";

class HttpServerTest : public ServerFixture {
protected:
    /// Keeps what is asked, for the test to answer.
    void serveLater() {
        serve([this](std::shared_ptr<HttpExchange> exchange) {
            const std::lock_guard lock(_mutex);
            _exchanges.push_back(std::move(exchange));
        });
    }

    std::shared_ptr<HttpExchange> nextExchange() {
        EXPECT_TRUE(waitUntil([this] {
            const std::lock_guard lock(_mutex);
            return !_exchanges.empty();
        }));
        const std::lock_guard lock(_mutex);
        auto exchange = std::move(_exchanges.front());
        _exchanges.erase(_exchanges.begin());
        return exchange;
    }

private:
    std::mutex _mutex;
    std::vector<std::shared_ptr<HttpExchange>> _exchanges;
};

HttpResponse text(const std::string& words) { return textResponse(200, "text/plain", words); }

TEST_F(HttpServerTest, ARequestComesDecodedToTheHandler) {
    HttpRequest seen;
    serve([&seen](const std::shared_ptr<HttpExchange>& exchange) {
        seen = exchange->request();
        exchange->send(text("hello"));
    });
    const RawAnswer answer = askOnce(port, "POST /a%2Fb/c?x=1+2 HTTP/1.1\r\nHOST: here\r\nAccept: a\r\nAccept: b\r\n"
                                           "Content-Length: 4\r\n\r\nbody");
    EXPECT_EQ(answer.version, "HTTP/1.1");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "hello");
    EXPECT_EQ(answer.header("content-type"), "text/plain");
    EXPECT_EQ(answer.header("content-length"), "5");
    EXPECT_FALSE(answer.headers.contains("connection"));
    EXPECT_THAT(answer.header("date"), EndsWith(" GMT"));
    EXPECT_EQ(seen.method, "POST");
    EXPECT_THAT(seen.segments, ElementsAre("a/b", "c"));
    EXPECT_THAT(seen.query, ElementsAre(Pair("x", "1 2")));
    EXPECT_THAT(seen.headers, ElementsAre(Pair("accept", "a, b"), Pair("content-length", "4"), Pair("host", "here")));
    EXPECT_EQ(seen.body, "body");
    EXPECT_EQ(seen.peer, "127.0.0.1");
}

TEST_F(HttpServerTest, AnswersAtOneByteATime) {
    serveText();
    RawClient client(port);
    for (const char& c : get)
        client.send({&c, 1});
    EXPECT_EQ(client.receiveAnswer().body, "hello");
}

TEST_F(HttpServerTest, HeadGetsTheHeadOfGet) {
    serveText();
    RawClient client(port);
    client.send("HEAD / HTTP/1.1\r\nHost: x\r\n\r\n" + get);
    const RawAnswer answer = client.receiveAnswer(true);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("content-length"), "5");
    EXPECT_EQ(client.receiveAnswer().body, "hello"); // right behind it
}

TEST_F(HttpServerTest, PipelinedRequestsAreAnsweredInOrder) {
    serveLater();
    RawClient client(port);
    client.send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\nPOST /2 HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\n\r\nhi\r\n" +
                get);
    const auto first = nextExchange();
    EXPECT_THAT(first->request().segments, ElementsAre("1"));
    first->send(text("first"));
    const auto second = nextExchange();
    EXPECT_EQ(second->request().body, "hi");
    second->send(text("second"));
    nextExchange()->send(text("third"));
    EXPECT_EQ(client.receiveAnswer().body, "first");
    EXPECT_EQ(client.receiveAnswer().body, "second");
    EXPECT_EQ(client.receiveAnswer().body, "third");
}

TEST_F(HttpServerTest, TheConnectionClosesWhereTheClientSaysSo) {
    serveText();
    RawClient client(port);
    client.send("GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    const RawAnswer answer = client.receiveAnswer();
    EXPECT_EQ(answer.header("connection"), "close");
    EXPECT_EQ(client.receiveAll(), "");
}

TEST_F(HttpServerTest, AnOldClientGetsOneAnswerUnlessItAsksForMore) {
    serveText();
    RawClient client(port);
    client.send("GET / HTTP/1.0\r\nConnection: keep-alive\r\n\r\nGET / HTTP/1.0\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().header("connection"), "keep-alive");
    EXPECT_EQ(client.receiveAnswer().header("connection"), "close");
    EXPECT_EQ(client.receiveAll(), "");
}

TEST_F(HttpServerTest, APartOfABodyIsSent) {
    const auto body = std::make_shared<std::vector<std::uint8_t>>(20'000'000);
    for (std::size_t i = 0; i < body->size(); ++i)
        (*body)[i] = static_cast<std::uint8_t>(i * 7 + i / 1000);
    serve([&body](const std::shared_ptr<HttpExchange>& exchange) {
        exchange->send({206, {}, body, 1'000'000, 18'000'000});
    });
    const RawAnswer answer = askOnce(port, get);
    EXPECT_EQ(answer.status, 206);
    EXPECT_TRUE(answer.body == std::string(body->begin() + 1'000'000, body->begin() + 19'000'000));
}

TEST_F(HttpServerTest, AnAnswerThatHasNoBodyTellsNoLength) {
    for (const int status : {204, 304}) {
        serve([status](const std::shared_ptr<HttpExchange>& exchange) {
            HttpResponse response = text("not sent");
            response.status = status;
            exchange->send(response);
        });
        RawClient client(port);
        client.send("GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        EXPECT_FALSE(client.receiveAnswer().headers.contains("content-length"));
        EXPECT_EQ(client.receiveAll(), "");
    }
}

TEST_F(HttpServerTest, AHandlerThatFailsIsAnsweredWithAProblem) {
    serve([](const std::shared_ptr<HttpExchange>&) { throw std::runtime_error("secret"); });
    const RawAnswer answer = askOnce(port, get);
    EXPECT_EQ(answer.status, 500);
    EXPECT_THAT(answer.body, HasSubstr("urn:camera-hub:problem:unexpected"));
    EXPECT_THAT(answer.body, testing::Not(HasSubstr("secret")));
}

TEST_F(HttpServerTest, AnExchangeThatIsDroppedIsAnsweredWithAProblem) {
    serveLater();
    RawClient client(port);
    client.send(get);
    nextExchange().reset();
    EXPECT_EQ(client.receiveAnswer().status, 500);
}

TEST_F(HttpServerTest, OnlyTheFirstAnswerCounts) {
    serve([](const std::shared_ptr<HttpExchange>& exchange) {
        exchange->send(text("one"));
        exchange->send(text("two"));
        throw std::runtime_error("three");
    });
    RawClient client(port);
    client.send(get + get);
    EXPECT_EQ(client.receiveAnswer().body, "one");
    EXPECT_EQ(client.receiveAnswer().body, "one");
}

TEST_F(HttpServerTest, AHeaderCannotEndItsLine) {
    serve([](const std::shared_ptr<HttpExchange>& exchange) {
        exchange->send({200, {{"X", "a\r\nY: b\nc"}}, nullptr, 0, 0});
    });
    const RawAnswer answer = askOnce(port, get);
    EXPECT_EQ(answer.header("x"), "a  Y: b c");
    EXPECT_FALSE(answer.headers.contains("y"));
}

TEST_F(HttpServerTest, EveryAnswerProtectsTheBrowser) {
    serveText();
    for (const std::string& request : {get, std::string("nonsense\r\n\r\n")}) {
        const RawAnswer answer = askOnce(port, request);
        EXPECT_EQ(answer.header("content-security-policy"),
                  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; connect-src 'self'; "
                  "manifest-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'");
        EXPECT_EQ(answer.header("x-content-type-options"), "nosniff");
        EXPECT_EQ(answer.header("x-frame-options"), "DENY");
        EXPECT_EQ(answer.header("referrer-policy"), "no-referrer");
        EXPECT_EQ(answer.header("cross-origin-resource-policy"), "same-origin");
        EXPECT_EQ(answer.header("cross-origin-opener-policy"), "same-origin");
        EXPECT_EQ(answer.header("permissions-policy"), "camera=(), microphone=(), geolocation=()");
        EXPECT_FALSE(answer.headers.contains("strict-transport-security"));
        EXPECT_FALSE(answer.headers.contains("server"));
    }
}

TEST_F(HttpServerTest, AnAnswersOwnHeaderCountsBeforeACommonOne) {
    serve([](const std::shared_ptr<HttpExchange>& exchange) {
        exchange->send({200, {{"x-frame-options", "SAMEORIGIN"}}, nullptr, 0, 0});
    });
    EXPECT_EQ(askOnce(port, get).header("x-frame-options"), "SAMEORIGIN");
}

TEST_F(HttpServerTest, AClientThatGoesBeforeItsAnswerIsNoticed) {
    serveLater();
    RawClient client(port);
    client.send(get);
    const auto exchange = nextExchange();
    std::promise<void> gone;
    exchange->whenGone([&gone] { gone.set_value(); });
    client.close();
    ASSERT_EQ(gone.get_future().wait_for(patience), std::future_status::ready);
    bool isCalledAtOnce = false;
    exchange->whenGone([&isCalledAtOnce] { isCalledAtOnce = true; });
    EXPECT_TRUE(isCalledAtOnce);
    exchange->send(text("for nobody"));
}

TEST_F(HttpServerTest, AClientThatWasAnsweredIsNotSaidToHaveGone) {
    serveLater();
    std::atomic<bool> isGone = false;
    {
        RawClient client(port);
        client.send(get);
        const auto exchange = nextExchange();
        exchange->whenGone([&isGone] { isGone = true; });
        exchange->send(text("hello"));
        EXPECT_EQ(client.receiveAnswer().body, "hello");
    }
    endServer();
    EXPECT_FALSE(isGone);
}

TEST_F(HttpServerTest, AnAnswerThatIsReadyReachesAClientThatSendsNoMore) {
    serveText();
    RawClient client(port);
    client.send(get);
    client.closeSending();
    EXPECT_EQ(client.receiveAnswer().body, "hello");
}

TEST_F(HttpServerTest, TheServersEndIsToldToWhatWaitsAndOutlived) {
    serveLater();
    RawClient client(port);
    client.send(get);
    const auto exchange = nextExchange();
    std::atomic<int> timesGone = 0;
    exchange->whenGone([&timesGone] { ++timesGone; });
    endServer();
    EXPECT_EQ(timesGone, 1);
    exchange->send(text("too late"));
    EXPECT_EQ(exchange->request().method, "GET");
    EXPECT_EQ(client.receiveAnswer().status, 0);
}

TEST_F(HttpServerTest, AnswersGivenWhileTheServerEndsDoNoHarm) {
    for (int round = 0; round < 20; ++round) {
        serveLater();
        RawClient client(port);
        client.send(get);
        auto exchange = nextExchange();
        std::thread other([&exchange] {
            exchange->send(text("hello"));
            exchange.reset();
        });
        endServer();
        other.join();
    }
}

TEST_F(HttpServerTest, APortThatIsTakenIsSaidInOneLine) {
    serveText();
    settings.port = port;
    try {
        const HttpServer second(settings, [](const std::shared_ptr<HttpExchange>&) {});
        FAIL() << "it listens";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()),
                  "Cannot listen on 127.0.0.1 port " + std::to_string(port) + ": Address already in use");
    }
    settings.address = "localhost";
    EXPECT_THROW(serveText(), std::runtime_error);
}

} // namespace
