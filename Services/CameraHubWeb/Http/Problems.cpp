#include "Services/CameraHubWeb/Http/Problems.h"

#include <utility>

namespace CameraHubWeb::Problems {
namespace {

Problem make(const char* kind, int status, const char* title, std::string detail, const char* advice) {
    Problem problem;
    problem.kind = kind;
    problem.status = status;
    problem.title = title;
    problem.detail = std::move(detail);
    problem.advice = advice;
    return problem;
}

Problem tooLarge(int status, const char* what, std::size_t limit, const char* advice) {
    return make("too-large", status, "The request is too large",
                std::string("The request's ") + what + " may have at most " + std::to_string(limit) + " bytes.",
                advice);
}

} // namespace

Problem invalidRequest(std::string detail) {
    return make("invalid-request", 400, "The request cannot be understood", std::move(detail),
                "Correct the request and send it again.");
}

Problem unauthorized() {
    return make("unauthorized", 401, "A token is needed", "The request has no token, or a wrong one.",
                "Log in, or send the token that the camera hub's owner has set.");
}

Problem forbidden() {
    return make("forbidden", 403, "Another site may not do this",
                "The request was made by a page of another site, and was refused.",
                "Open the camera hub's own page and do it there.");
}

Problem notFound(std::string detail) {
    return make("not-found", 404, "Not found", std::move(detail),
                "Check the address, or start again from the camera hub's page.");
}

Problem noSuchCamera() {
    return make("no-such-camera", 404, "There is no such camera", "The hub knows no camera of this name.",
                "Check that the camera is connected, and pick one from the list of cameras.");
}

Problem methodNotAllowed(std::string allow) {
    Problem problem = make("method-not-allowed", 405, "This cannot be done here",
                           "This address does not take the request's method.", "Use one of: ");
    problem.advice += allow + ".";
    problem.allow = std::move(allow);
    return problem;
}

Problem requestTimeout() {
    return make("request-timeout", 408, "The request came too slowly",
                "The request did not arrive completely in the time that it has.",
                "Check the network connection and try again.");
}

Problem bodyTooLarge(std::size_t limit) { return tooLarge(413, "body", limit, "Send a smaller body."); }

Problem targetTooLarge(std::size_t limit) { return tooLarge(414, "address", limit, "Use a shorter address."); }

Problem headTooLarge(std::size_t limit) {
    return tooLarge(431, "head", limit,
                    "Send fewer or shorter headers; in a browser, delete the cookies of this site.");
}

Problem unsupportedMediaType(const std::string& wanted) {
    Problem problem =
        make("unsupported-media-type", 415, "The body is of the wrong kind",
             "The request's body is not said to be of the kind that is taken here.", "Send it with Content-Type: ");
    problem.advice += wanted + ".";
    return problem;
}

Problem misdirected() {
    return make("misdirected", 421, "This is not the program for that host",
                "The request is for a host name that is not known to be this machine's.",
                "Use the machine's address instead, or have the name allowed with --allow-host.");
}

Problem tooMany(std::string detail, int retryAfter) {
    Problem problem = make("too-many", 429, "Too much at once", std::move(detail), "Wait a little and try again.");
    problem.retryAfter = retryAfter;
    return problem;
}

Problem unexpected() {
    return make("unexpected", 500, "Something went wrong here", "The request failed for a reason within this program.",
                "Try again; if it happens again, look into the program's log.");
}

Problem cameraFailed(std::string detail) {
    return make("camera-failed", 502, "The camera failed", std::move(detail),
                "Check that the camera is connected and that no other program uses it, then try again.");
}

Problem hubUnusable(std::string detail) {
    return make("hub-unusable", 502, "What answers is not a camera hub", std::move(detail),
                "Check the hub's address and ports in this program's options.");
}

Problem hubAway(std::string detail) {
    Problem problem = make("hub-away", 503, "The camera hub cannot be reached", std::move(detail),
                           "Check that the camera hub is running; it is used again as soon as it is back.");
    problem.retryAfter = 2;
    return problem;
}

Problem queueFull() {
    Problem problem = make("queue-full", 503, "Too many stills are waiting", "The queue of stills to take is full.",
                           "Wait until some of them are taken, then try again.");
    problem.retryAfter = 5;
    return problem;
}

Problem serverFull() {
    Problem problem = make("too-many", 503, "Too much at once", "All connections that are served here are taken.",
                           "Close pages that are not needed, wait a little and try again.");
    problem.retryAfter = 5;
    return problem;
}

Problem hubTimeout(std::string detail) {
    return make("hub-timeout", 504, "The camera hub did not answer in time", std::move(detail),
                "Try again; if it happens again, restart the camera hub.");
}

} // namespace CameraHubWeb::Problems
