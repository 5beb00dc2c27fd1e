#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"

#include <optional>
#include <string>

namespace CameraHubWeb {

/// Why a request is not answered with what it asked for, as RFC 9457 has it, in words for people.
struct Problem {
    /// What programs tell it by: "hub-away". Its type is "urn:camera-hub:problem:" and this.
    std::string kind;
    int status = 500;
    /// The same for all of the kind.
    std::string title;
    /// What happened, in one sentence. Nothing of the machine's files.
    std::string detail;
    /// What to do, in one sentence.
    std::string advice;
    /// In seconds, for Retry-After.
    std::optional<int> retryAfter;
    /// For Allow, of method-not-allowed.
    std::string allow;
};

/// application/problem+json.
HttpResponse problemResponse(const Problem& problem);

} // namespace CameraHubWeb
