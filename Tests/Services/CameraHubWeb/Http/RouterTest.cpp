#include "Services/CameraHubWeb/Http/Router.h"

#include "Tests/Services/CameraHubWeb/Http/RecordedExchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace CameraHubWeb;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class RouterTest : public testing::Test {
protected:
    RouterTest() {
        router.add("GET", {"stills", "*"}, recordAs("picture"));
        router.add("GET", {"cameras", "*", "stills", "*"}, recordAs("one of a camera"));
        router.add("GET", {"take"}, recordAs("take"), HeadRequests::Refused);
        router.add("POST", {"stills", "latest"}, recordAs("post"));
        router.add("GET", {}, recordAs("root"));
    }

    Router::Handler recordAs(const std::string& name) {
        return [this, name](const std::shared_ptr<HttpExchange>& exchange, const std::vector<std::string>& matched) {
            called = name;
            values = matched;
            exchange->send(textResponse(200, "text/plain", name));
        };
    }

    std::shared_ptr<RecordedExchange> ask(const std::string& method, std::vector<std::string> segments) {
        HttpRequest request;
        request.method = method;
        request.segments = std::move(segments);
        auto exchange = std::make_shared<RecordedExchange>(std::move(request));
        router.handle(exchange);
        return exchange;
    }

    Router router;
    std::string called;
    std::vector<std::string> values;
};

TEST_F(RouterTest, TheHandlerGetsWhatTheStarsStandFor) {
    ask("GET", {"cameras", "a/b", "stills", "7"});
    EXPECT_EQ(called, "one of a camera");
    EXPECT_THAT(values, ElementsAre("a/b", "7"));
}

TEST_F(RouterTest, TheRootHasNoSegments) {
    ask("GET", {});
    EXPECT_EQ(called, "root");
}

TEST_F(RouterTest, AStarStandsForNoEmptySegment) {
    EXPECT_EQ(ask("GET", {"stills", ""})->answer->status, 404);
    EXPECT_EQ(called, "");
}

TEST_F(RouterTest, AnUnknownPathIsNotFound) {
    const auto exchange = ask("GET", {"stills", "x", "y"});
    EXPECT_EQ(exchange->answer->status, 404);
    EXPECT_THAT(exchange->body(), HasSubstr("urn:camera-hub:problem:not-found"));
    EXPECT_EQ(ask("OPTIONS", {"nothing"})->answer->status, 404);
}

TEST_F(RouterTest, AMethodThatThePathDoesNotTakeIsToldWhichItTakes) {
    const auto exchange = ask("BREW", {"stills", "latest"});
    EXPECT_EQ(exchange->answer->status, 405);
    EXPECT_EQ(exchange->header("Allow"), "GET, HEAD, POST, OPTIONS");
    EXPECT_THAT(exchange->body(), HasSubstr("Use one of: GET, HEAD, POST, OPTIONS."));
}

TEST_F(RouterTest, ARouteForAnotherMethodDoesNotHideOne) {
    ask("POST", {"stills", "latest"});
    EXPECT_EQ(called, "post");
}

TEST_F(RouterTest, HeadIsServedAsGetIs) {
    EXPECT_EQ(ask("HEAD", {"stills", "x"})->answer->status, 200);
    EXPECT_EQ(called, "picture");
}

TEST_F(RouterTest, HeadIsRefusedWhereAGetHasEffects) {
    const auto exchange = ask("HEAD", {"take"});
    EXPECT_EQ(exchange->answer->status, 405);
    EXPECT_EQ(exchange->header("Allow"), "GET, OPTIONS");
    EXPECT_EQ(called, "");
}

TEST_F(RouterTest, OptionsTellsTheMethods) {
    const auto exchange = ask("OPTIONS", {"stills", "x"});
    EXPECT_EQ(exchange->answer->status, 204);
    EXPECT_EQ(exchange->header("Allow"), "GET, HEAD, OPTIONS");
    EXPECT_EQ(called, "");
}

} // namespace
