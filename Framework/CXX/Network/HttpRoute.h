#pragma once

#include "Framework/CXX/Network/HttpRequest.h"

#include <functional>
#include <optional>
#include <regex>
#include <string>

class HttpResponse;

using RouteHandler = std::function<void(HttpRequest*, HttpResponse*)>;

/// A pattern for whole paths, and who answers those that match.
struct HttpRoute {
    /// Raises std::regex_error for a bad pattern.
    HttpRoute(const std::string& patternText, RouteHandler routeHandler);

    /// Whether the whole of the request's path matches; fills its matches either way.
    bool accepts(HttpRequest& request) const;

    std::regex pattern;
    /// The same pattern for paths of any length; absent if it has back-references.
    std::optional<std::regex> patternForLongPaths;
    RouteHandler handler;
};
