#include "Framework/CXX/Network/HttpServer.h"

#include "Framework/CXX/Network/HttpClient.h"
#include "Tests/Framework/CXX/Network/HttpFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

class HttpServerTest : public HttpFixture {
protected:
    /// Registers a pattern whose handler answers with the sub-matches, each in brackets.
    void showMatches(const char* pattern) {
        route(pattern, [](HttpRequest* request, HttpResponse* response) {
            std::string shown;
            for (const auto& match : request->matches)
                shown += "[" + match.str() + "]";
            respond(response, shown);
        });
    }

    void routeSaying(const char* pattern, const std::string& body) {
        route(pattern, [body](HttpRequest*, HttpResponse* response) { respond(response, body); });
    }

    std::string get(const std::string& url) { return exchange("GET " + url + " HTTP/1.1\r\n\r\n"); }
};

TEST_F(HttpServerTest, IsAQObjectWithoutSignalsAndSlots) {
    EXPECT_STREQ(HttpServer::staticMetaObject.className(), "HttpServer");
    EXPECT_EQ(HttpServer::staticMetaObject.methodCount(), HttpServer::staticMetaObject.methodOffset());
    EXPECT_EQ(server.serverAddress(), QHostAddress(QHostAddress::Any));
}

TEST_F(HttpServerTest, ATakenPortIsNotReported) {
    const HttpServer second(server.serverPort(), nullptr);
    EXPECT_FALSE(second.isListening());
}

TEST_F(HttpServerTest, WithoutRoutesEveryRequestGets404) {
    connect().send("GET /res/x HTTP/1.1\r\n\r\nPUT / HTTP/1.1\r\n\r\n");
    EXPECT_EQ(connect().receive(2 * notFoundResponse.size()), notFoundResponse + notFoundResponse);
}

TEST_F(HttpServerTest, APatternMatchesWholePathsOnly) {
    showMatches("/res/.*");
    EXPECT_EQ(get("/res"), notFoundResponse);
}

TEST_F(HttpServerTest, APatternMatchesItsShortestPath) {
    showMatches("/res/.*");
    EXPECT_EQ(get("/res/"), plainResponse("[/res/]"));
}

TEST_F(HttpServerTest, WhatStandsBeforeOrBehindIsNoMatch) {
    showMatches("/res");
    EXPECT_EQ(exchange("GET /x/res HTTP/1.1\r\n\r\nGET /res/ HTTP/1.1\r\n\r\n"), notFoundResponse + notFoundResponse);
}

TEST_F(HttpServerTest, TheFirstRegisteredOfTwoMatchingRoutesWins) {
    routeSaying("/a.*", "first");
    routeSaying("/ab", "second");
    EXPECT_EQ(get("/ab"), plainResponse("first"));
}

TEST_F(HttpServerTest, ARouteThatDoesNotMatchIsPassedOver) {
    routeSaying("/a", "first");
    routeSaying("/ab", "second");
    EXPECT_EQ(get("/ab"), plainResponse("second"));
}

TEST_F(HttpServerTest, SubMatchesLieInThePath) {
    showMatches("/(\\w+)/(x)?(\\d*)");
    EXPECT_EQ(get("/res/42"), plainResponse("[/res/42][res][][42]"));
}

TEST_F(HttpServerTest, TheQueryIsNotMatched) {
    showMatches("/res/.*");
    EXPECT_EQ(get("/res/a?b"), plainResponse("[/res/a]"));
}

TEST_F(HttpServerTest, ThePathIsMatchedUndecoded) {
    showMatches("/res/.*");
    EXPECT_EQ(get("/res/%41"), plainResponse("[/res/%41]"));
    connection.reset();
}

TEST_F(HttpServerTest, TheMethodPlaysNoPart) {
    routeSaying("/x", "any");
    EXPECT_EQ(exchange("DELETE /x HTTP/1.1\r\n\r\nnonsense /x \r\n\r\n"), plainResponse("any") + plainResponse("any"));
}

TEST_F(HttpServerTest, ARequestWithoutAUrlGets404) {
    routeSaying("/x.*", "any");
    EXPECT_EQ(exchange("GET\r\n\r\nGET /x\r\n\r\n"), notFoundResponse + notFoundResponse);
}

TEST_F(HttpServerTest, ABadPatternIsRaised) {
    EXPECT_THROW(server.addRoute("/res/(", [](HttpRequest*, HttpResponse*) {}), std::regex_error);
    EXPECT_EQ(get("/res/("), notFoundResponse);
}

TEST_F(HttpServerTest, ConnectionsCountUpwards) {
    std::vector<int> ids;
    route("/id", [&](HttpRequest* request, HttpResponse* response) {
        ids.push_back(request->clientId());
        respond(response, "");
    });
    exchange("GET /id HTTP/1.1\r\n\r\nGET /id HTTP/1.1\r\n\r\n");
    connection.reset();
    exchange("GET /id HTTP/1.1\r\n\r\n");
    ASSERT_EQ(ids.size(), 3U);
    EXPECT_GE(ids[0], 2);
    EXPECT_EQ(ids[1], ids[0]);
    EXPECT_EQ(ids[2], ids[0] + 1);
}

TEST_F(HttpServerTest, RemoveClientTakesEveryEqualEntry) {
    EXPECT_EQ(exchange("GET / HTTP/1.1\r\n\r\n"), notFoundResponse);
    auto* const noClient = reinterpret_cast<HttpClient*>(&server);
    server.addClient(noClient);
    server.addClient(noClient);
    server.removeClient(noClient);
    server.closeClients(); // would use it
    EXPECT_TRUE(turnUntil([&] { return !connection->isConnected(); }));
}

TEST_F(HttpServerTest, CloseClientsEndsEveryConnection) {
    TestConnection one(server.serverPort());
    TestConnection two(server.serverPort());
    one.send("GET / HTTP/1.1\r\n\r\n");
    two.send("GET / HTTP/1.1\r\n\r\n");
    one.receiveUntil(notFoundResponse);
    two.receiveUntil(notFoundResponse);
    server.closeClients();
    EXPECT_TRUE(turnUntil([&] { return !one.isConnected() && !two.isConnected(); }));
}

class LongPathTest : public HttpServerTest, public testing::WithParamInterface<std::size_t> {
protected:
    std::string pathOf(std::size_t size) const { return "/res/" + std::string(size - 5, 'a'); }
};

TEST_P(LongPathTest, AMatchingPathIsAnsweredWithItsMatches) {
    showMatches("/(res)/(.*)");
    const std::string path = pathOf(GetParam());
    EXPECT_EQ(get(path), plainResponse("[" + path + "][res][" + path.substr(5) + "]"));
}

TEST_P(LongPathTest, APathThatDoesNotMatchGets404) {
    showMatches("/res/a*b");
    EXPECT_EQ(get(pathOf(GetParam())), notFoundResponse);
}

TEST_P(LongPathTest, ARepeatedGroupIsMatched) {
    showMatches("/res/(a|b)*");
    const std::string path = pathOf(GetParam());
    EXPECT_EQ(get(path), plainResponse("[" + path + "][a]"));
}

// On both sides of the length from which the other matcher is used, and up to what used to be fatal.
INSTANTIATE_TEST_SUITE_P(HttpServer, LongPathTest, testing::Values(6, 1024, 1025, 100000, 1000000));

TEST_F(HttpServerTest, BackReferencesAreMatched) {
    showMatches("/(\\w+)-\\1");
    EXPECT_EQ(exchange("GET /ab-ab HTTP/1.1\r\n\r\nGET /ab-ac HTTP/1.1\r\n\r\n"),
              plainResponse("[/ab-ab][ab]") + notFoundResponse);
}

} // namespace
