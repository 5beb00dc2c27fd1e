#include "Services/CameraHubWeb/Http/Problem.h"

#include "Services/CameraHubWeb/Http/Problems.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <memory>

using namespace CameraHubWeb;

namespace {

std::string header(const HttpResponse& response, const std::string& name) {
    for (const auto& [key, value] : response.headers)
        if (key == name)
            return value;
    return "";
}

Json::Value json(const HttpResponse& response) {
    const std::string text(response.body->begin(), response.body->end());
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
    return value;
}

TEST(ProblemTest, IsAnsweredAsAStandardObject) {
    const HttpResponse response = problemResponse(Problems::hubAway("Nothing listens at \"desk\"."));
    EXPECT_EQ(response.status, 503);
    EXPECT_EQ(header(response, "Content-Type"), "application/problem+json");
    EXPECT_EQ(header(response, "Cache-Control"), "no-store");
    EXPECT_EQ(header(response, "Retry-After"), "2");
    const Json::Value value = json(response);
    EXPECT_EQ(value["type"], "urn:camera-hub:problem:hub-away");
    EXPECT_EQ(value["title"], "The camera hub cannot be reached");
    EXPECT_EQ(value["status"], 503);
    EXPECT_EQ(value["detail"], "Nothing listens at \"desk\".");
    EXPECT_NE(value["advice"].asString(), "");
    EXPECT_EQ(value.size(), 5U);
}

TEST(ProblemTest, ADetailInUtf8Survives) {
    EXPECT_EQ(json(problemResponse(Problems::cameraFailed("Küche 📷")))["detail"], "Küche 📷");
}

TEST(ProblemTest, ADetailThatIsNoUtf8LeavesTheJsonWhole) {
    EXPECT_EQ(json(problemResponse(Problems::cameraFailed("a\xff\xc3")))["status"], 502);
}

TEST(ProblemTest, TheMethodsThatAreTakenAreAHeader) {
    EXPECT_EQ(header(problemResponse(Problems::methodNotAllowed("GET, HEAD")), "Allow"), "GET, HEAD");
    EXPECT_EQ(header(problemResponse(Problems::notFound()), "Allow"), "");
}

struct Known {
    Problem problem;
    const char* kind;
    int status;
};

TEST(ProblemTest, EachKindHasItsStatusAndWordsForPeople) {
    const Known all[] = {
        {Problems::invalidRequest("x"), "invalid-request", 400},
        {Problems::unauthorized(), "unauthorized", 401},
        {Problems::forbidden(), "forbidden", 403},
        {Problems::notFound(), "not-found", 404},
        {Problems::noSuchCamera(), "no-such-camera", 404},
        {Problems::methodNotAllowed("GET"), "method-not-allowed", 405},
        {Problems::requestTimeout(), "request-timeout", 408},
        {Problems::bodyTooLarge(1), "too-large", 413},
        {Problems::targetTooLarge(1), "too-large", 414},
        {Problems::unsupportedMediaType(), "unsupported-media-type", 415},
        {Problems::misdirected(), "misdirected", 421},
        {Problems::tooMany("x", 5), "too-many", 429},
        {Problems::headTooLarge(1), "too-large", 431},
        {Problems::unexpected(), "unexpected", 500},
        {Problems::cameraFailed("x"), "camera-failed", 502},
        {Problems::hubUnusable("x"), "hub-unusable", 502},
        {Problems::hubAway("x"), "hub-away", 503},
        {Problems::queueFull(), "queue-full", 503},
        {Problems::serverFull(), "too-many", 503},
        {Problems::hubTimeout("x"), "hub-timeout", 504},
    };
    for (const Known& known : all) {
        SCOPED_TRACE(known.kind);
        EXPECT_EQ(known.problem.kind, known.kind);
        EXPECT_EQ(known.problem.status, known.status);
        EXPECT_FALSE(known.problem.title.empty());
        EXPECT_FALSE(known.problem.detail.empty());
        EXPECT_TRUE(known.problem.advice.ends_with('.')) << known.problem.advice;
        EXPECT_EQ(known.problem.retryAfter.has_value(), known.status == 503 || known.status == 429);
    }
}

} // namespace
