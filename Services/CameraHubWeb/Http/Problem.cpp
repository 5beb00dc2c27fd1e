#include "Services/CameraHubWeb/Http/Problem.h"

#include <json/json.h>

namespace CameraHubWeb {

HttpResponse problemResponse(const Problem& problem) {
    Json::Value json;
    json["type"] = "urn:camera-hub:problem:" + problem.kind;
    json["title"] = problem.title;
    json["status"] = problem.status;
    json["detail"] = problem.detail;
    json["advice"] = problem.advice;
    // In ASCII, with escapes: a detail may quote bytes of others that are no UTF-8.
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    HttpResponse response =
        textResponse(problem.status, "application/problem+json", Json::writeString(writer, json) + "\n");
    response.headers.emplace_back("Cache-Control", "no-store");
    if (problem.retryAfter)
        response.headers.emplace_back("Retry-After", std::to_string(*problem.retryAfter));
    if (!problem.allow.empty())
        response.headers.emplace_back("Allow", problem.allow);
    return response;
}

} // namespace CameraHubWeb
