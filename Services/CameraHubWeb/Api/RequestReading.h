#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"
#include "Services/CameraHubWeb/Http/Problem.h"

#include <CameraHubClient/CaptureRequest.h>

#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace CameraHubWeb {

/// A request cannot be answered with what it asks for; the handlers' common end makes an answer of it.
class Refused : public std::runtime_error {
public:
    explicit Refused(Problem problem) : std::runtime_error(problem.detail), _problem(std::move(problem)) {}

    const Problem& problem() const { return _problem; }

private:
    Problem _problem;
};

/// What a client wants of a picture.
struct PictureOptions {
    /// In pixels; none: as wide as it is.
    std::optional<int> width;
    int quality = 85;
};

/// What a POST for a still has.
struct StillOrder {
    CameraHub::CaptureRequest capture;
    std::string ticket;
};

// All throw Refused, with a detail that names the parameter and what it takes. Any thread.

/// That the query has no other parameters than these.
void checkParameters(const HttpRequest& request, std::initializer_list<std::string_view> known);

/// Out of "exposure" or "percent", and "settle".
CameraHub::CaptureRequest readCaptureQuery(const HttpRequest& request, const std::string& uid);

/// Out of "width" and "quality".
PictureOptions readPictureQuery(const HttpRequest& request);

/// Out of "fps"; from 0.1 to 30.
double readFramesPerSecond(const HttpRequest& request);

/// Out of a body in JSON, of which the request has to say that it is that.
StillOrder readStillOrder(const HttpRequest& request, const std::string& uid);

} // namespace CameraHubWeb
