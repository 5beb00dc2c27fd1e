#include "Framework/CXX/Network/HttpClient.h"

#include "Tests/Framework/CXX/Network/HttpFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaMethod>
#include <map>
#include <string>
#include <vector>

using namespace std::string_literals;
using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

class HttpClientTest : public HttpFixture {
protected:
    struct Seen {
        std::string method;
        std::string url;
        std::map<std::string, std::string> headers;
    };

    HttpClientTest() {
        route("/echo.*", [this](HttpRequest* request, HttpResponse* response) {
            seen.push_back({request->method, request->url, request->headers});
            respond(response, request->url);
        });
        route("/body", [this](HttpRequest* request, HttpResponse* response) {
            request->setBodyHandler([this](const char* data, size_t size) { bodies.emplace_back(data, size); });
            tookBodyHandler = request->hasBodyHandler;
            respond(response, "asked");
        });
        route("/later", [this](HttpRequest*, HttpResponse* response) { pending = response; });
    }

    std::map<std::string, std::string> headersOf(const std::string& head) {
        EXPECT_EQ(exchange(head), plainResponse("/echo"));
        return seen.empty() ? std::map<std::string, std::string>() : seen.front().headers;
    }

    std::vector<Seen> seen;
    std::vector<std::string> bodies;
    bool tookBodyHandler = false;
    HttpResponse* pending = nullptr;
};

TEST_F(HttpClientTest, MetaDataListsTwoPrivateSlots) {
    const QMetaObject& meta = HttpClient::staticMetaObject;
    EXPECT_STREQ(meta.className(), "HttpClient");
    ASSERT_EQ(meta.methodCount(), meta.methodOffset() + 2);
    EXPECT_EQ(meta.method(meta.methodOffset()).methodSignature(), "readClient()");
    EXPECT_EQ(meta.method(meta.methodOffset() + 1).methodSignature(), "discardClient()");
    EXPECT_EQ(meta.method(meta.methodOffset()).access(), QMetaMethod::Private);
}

TEST_F(HttpClientTest, HeadIsReadLineByLine) {
    EXPECT_THAT(headersOf("GET /echo HTTP/1.1\r\nHost: here\r\nhost: there\r\nEmpty:\r\nno header\r\n\r\n"),
                UnorderedElementsAre(Pair("Host", "here"), Pair("host", "there"), Pair("Empty", "")));
}

TEST_F(HttpClientTest, TwoRequestsOnOneConnectionGetTwoResponsesInOrder) {
    EXPECT_EQ(exchange("GET /echo1 HTTP/1.1\r\n\r\nGET /echo2 HTTP/1.1\r\n\r\n"),
              plainResponse("/echo1") + plainResponse("/echo2"));
}

TEST_F(HttpClientTest, ARequestMayComeByteByByte) {
    for (const char byte : "GET /echo HTTP/1.1\r\nA: b\r\n\r\n"s) {
        connect().send(std::string(1, byte));
        turnEventLoop();
    }
    EXPECT_EQ(connect().receiveUntil("/echo"), plainResponse("/echo"));
    EXPECT_THAT(seen.front().headers, ElementsAre(Pair("A", "b")));
}

TEST_F(HttpClientTest, ConnectionCloseLeavesTheConnectionOpen) {
    EXPECT_EQ(exchange("GET /echo HTTP/1.1\r\nConnection: close\r\n\r\nGET /echo HTTP/1.0\r\n\r\n"),
              plainResponse("/echo") + plainResponse("/echo"));
    EXPECT_TRUE(connect().isConnected());
}

TEST_F(HttpClientTest, AColonInTheUrlMakesAnOddHeader) {
    EXPECT_EQ(exchange("GET /echo:1 HTTP/1.1\r\n\r\n"), plainResponse("/echo:1"));
    EXPECT_THAT(seen.front().headers, ElementsAre(Pair("GET /echo", "1 HTTP/1.1")));
}

TEST_F(HttpClientTest, ABareLineFeedIsData) {
    EXPECT_THAT(headersOf("GET /echo HTTP/1.1\r\nA: b\nC: d\r\n\r\n"), ElementsAre(Pair("A", "b")));
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(HttpClientTest, ABareCrWithinALineIsKept) {
    // It then ends the name, as any CR in a line does.
    EXPECT_THAT(headersOf("GET /echo HTTP/1.1\r\nA\rb: c\r\n\r\n"), ElementsAre(Pair("A", "b: c")));
}

TEST_F(HttpClientTest, ABareCrAtTheStartOfALineIsDropped) {
    EXPECT_THAT(headersOf("\rGET /echo HTTP/1.1\r\n\rA: b\r\n\r\n"), ElementsAre(Pair("A", "b")));
}

TEST_F(HttpClientTest, TwoCrsBeforeALineFeedDoNotEndTheLine) {
    // The second CR is taken as data, and so is the line feed.
    EXPECT_THAT(headersOf("GET /echo HTTP/1.1\r\nA: b\r\r\nC: d\r\n\r\n"), ElementsAre(Pair("A", "b")));
}

TEST_F(HttpClientTest, ANulEndsALineForItsParser) {
    EXPECT_THAT(headersOf("GET /echo HTTP/1.1\r\nA: b\0c\r\n\r\n"s), ElementsAre(Pair("A", "b")));
}

TEST_F(HttpClientTest, TheHandlerRunsBeforeTheBodyIsThere) {
    connect().send("PUT /echo HTTP/1.1\r\nContent-Length: 3\r\n\r\n");
    EXPECT_EQ(connect().receiveUntil("/echo"), plainResponse("/echo"));
}

TEST_F(HttpClientTest, ABodyNobodyAskedForIsDropped) {
    const std::string body = "GET /echo-body HTTP/1.1\r\n\r\n"; // would be answered
    EXPECT_EQ(exchange("GET /echo HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body +
                       "GET /echo2 HTTP/1.1\r\n\r\n"),
              plainResponse("/echo") + plainResponse("/echo2"));
}

TEST_F(HttpClientTest, ABodyAskedForIsPassedOnWhole) {
    EXPECT_EQ(exchange("PUT /body HTTP/1.1\r\nContent-Length: 6\r\n\r\na\0\r\n\r\n"s), plainResponse("asked"));
    EXPECT_TRUE(tookBodyHandler);
    EXPECT_THAT(bodies, ElementsAre("a\0\r\n\r\n"s));
}

TEST_F(HttpClientTest, ABodyOf0BytesIsNoBody) {
    EXPECT_EQ(exchange("PUT /body HTTP/1.1\r\nContent-Length: 0\r\n\r\n"), plainResponse("asked"));
    EXPECT_FALSE(tookBodyHandler);
    EXPECT_THAT(bodies, ElementsAre());
}

TEST_F(HttpClientTest, ALengthThatIsNoNumberCountsAs0) {
    EXPECT_EQ(exchange("PUT /body HTTP/1.1\r\nContent-Length: x\r\n\r\n"), plainResponse("asked"));
    EXPECT_FALSE(tookBodyHandler);
}

TEST_F(HttpClientTest, ABodyHandlerIsForOneRequestOnly) {
    exchange("PUT /body HTTP/1.1\r\nContent-Length: 3\r\n\r\nabcPUT /echo HTTP/1.1\r\nContent-Length: 3\r\n\r\ndef");
    EXPECT_THAT(bodies, ElementsAre("abc"));
}

TEST_F(HttpClientTest, ContentLengthWinsOverTransferEncoding) {
    EXPECT_EQ(exchange("PUT /echo HTTP/1.1\r\nTransfer-Encoding: chunked\r\nContent-Length: 3\r\n\r\nabc"),
              plainResponse("/echo"));
}

TEST_F(HttpClientTest, ALengthInLowerCaseIsNotSeen) {
    // The body's bytes then begin the next request's head.
    EXPECT_EQ(exchange("PUT /echo HTTP/1.1\r\ncontent-length: 3\r\n\r\nabcGET /echo2 HTTP/1.1\r\n\r\n"),
              plainResponse("/echo") + plainResponse("/echo2"));
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1].method, "abcGET");
}

TEST_F(HttpClientTest, AWaitingResponseStopsTheReading) {
    connect().send("GET /later HTTP/1.1\r\n\r\nGET /echo HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(turnUntil([&] { return pending != nullptr; }));
    connect().send("GET /echo HTTP/1.1\r\n\r\n");
    TestConnection other(server.serverPort());
    other.send("GET /echo-other HTTP/1.1\r\n\r\n");
    EXPECT_EQ(other.receiveUntil("/echo-other"), plainResponse("/echo-other"));
    EXPECT_EQ(connect().received(), "");
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(HttpClientTest, ALaterFinishIsNoticedAtTheNextBytes) {
    connect().send("GET /later HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(turnUntil([&] { return pending != nullptr; }));
    respond(pending, "late");
    EXPECT_EQ(connect().receiveUntil("late"), plainResponse("late"));
    connect().send("GET /echo HTTP/1.1\r\n\r\n");
    EXPECT_EQ(connect().receiveUntil("/echo"), plainResponse("late") + plainResponse("/echo"));
}

TEST_F(HttpClientTest, ABodyDoesNotWaitForTheResponse) {
    EXPECT_EQ(exchange("PUT /later HTTP/1.1\r\nContent-Length: 3\r\n\r\nabcGET /echo HTTP/1.1\r\n\r\n"),
              plainResponse("/echo"));
}

TEST_F(HttpClientTest, ABodyOf0BytesDoesNotWaitForTheResponseEither) {
    EXPECT_EQ(exchange("PUT /later HTTP/1.1\r\nContent-Length: 0\r\n\r\nGET /echo HTTP/1.1\r\n\r\n"),
              plainResponse("/echo"));
}

TEST_F(HttpClientTest, AHalfReadRequestGoesWithItsConnection) {
    connect().send("GET /echo HTTP/1.1\r\nA: ");
    connection.reset();
    EXPECT_EQ(exchange("GET /echo2 HTTP/1.1\r\n\r\n"), plainResponse("/echo2"));
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(HttpClientTest, LongHeadsAndManyHeadersAreRead) {
    std::string head = "GET /echo HTTP/1.1\r\nLong: " + std::string(1000000, 'v') + "\r\n";
    for (int i = 0; i < 10000; ++i)
        head += "N" + std::to_string(i) + ": v\r\n";
    const auto headers = headersOf(head + "\r\n");
    EXPECT_EQ(headers.size(), 10001U);
    EXPECT_EQ(headers.at("Long").size(), 1000000U);
}

} // namespace
