#pragma once

#include "Services/CameraHubWeb/Http/Problem.h"

#include <cstddef>
#include <string>

/// The problems that this program knows. What a detail is to say, in one sentence with its full stop, is given where it
/// differs from case to case.
namespace CameraHubWeb::Problems {

/// 400; the detail names the field and what it takes.
Problem invalidRequest(std::string detail);
/// 401; whoever sends it adds WWW-Authenticate.
Problem unauthorized();
/// 403
Problem forbidden();
/// 404
Problem notFound(std::string detail = "There is nothing at this address.");
/// 404
Problem noSuchCamera();
/// 405; `allow` as the header has it: "GET, HEAD".
Problem methodNotAllowed(std::string allow);
/// 408
Problem requestTimeout();
/// 413
Problem bodyTooLarge(std::size_t limit);
/// 414
Problem targetTooLarge(std::size_t limit);
/// 431
Problem headTooLarge(std::size_t limit);
/// 415; `wanted` is the media type that is taken.
Problem unsupportedMediaType(const std::string& wanted = "application/json");
/// 421
Problem misdirected();
/// 429; `retryAfter` in seconds.
Problem tooMany(std::string detail, int retryAfter);
/// 500
Problem unexpected();
/// 502; the detail is the hub's text.
Problem cameraFailed(std::string detail);
/// 502
Problem hubUnusable(std::string detail);
/// 503
Problem hubAway(std::string detail);
/// 503
Problem queueFull();
/// 503: all connections that this program serves are taken.
Problem serverFull();
/// 504
Problem hubTimeout(std::string detail);

} // namespace CameraHubWeb::Problems
