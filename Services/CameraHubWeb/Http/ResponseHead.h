#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CameraHubWeb {

using HeaderList = std::vector<std::pair<std::string, std::string>>;

/// What every answer has for the browser's sake: nothing is loaded from elsewhere, and no page of another site shows
/// it.
HeaderList securityHeaders(bool isTls);

/// What a head tells of the body and of the connection.
struct Framing {
    /// None: not told.
    std::optional<std::size_t> length;
    bool isChunked = false;
    /// "close" or "keep-alive"; empty where the version says it.
    std::string connection;
};

/// The head as it is sent. Of the common headers, those that the response has itself are left out; what would end a
/// header's line becomes a space.
std::string responseHead(const HttpResponse& response, const HeaderList& common, const Framing& framing);

} // namespace CameraHubWeb
