#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CameraHubWeb {

/// Whether a route for GET takes HEAD too: not where a GET has effects.
enum class HeadRequests : std::uint8_t { Taken, Refused };

/// Finds the handler for a request's path and method. Answers itself what has none: 404, 405 with Allow, and OPTIONS.
class Router {
public:
    /// Called with what stood for each "*" of the pattern, none of them empty.
    using Handler = std::function<void(std::shared_ptr<HttpExchange>, std::vector<std::string>)>;

    /// The pattern is the path's segments, "*" for any one; of several that match, the first one added counts.
    void add(std::string method, std::vector<std::string> pattern, Handler handler,
             HeadRequests head = HeadRequests::Taken);

    /// Any thread, once all are added.
    void handle(const std::shared_ptr<HttpExchange>& exchange) const;

private:
    struct Route {
        std::string method;
        std::vector<std::string> pattern;
        Handler handler;
        HeadRequests head;

        bool takes(const std::string& asked) const;
        bool matches(const std::vector<std::string>& segments) const;
    };

    /// Of all routes for the path; empty where there is none.
    std::string allowed(const std::vector<std::string>& segments) const;

    std::vector<Route> _routes;
};

} // namespace CameraHubWeb
