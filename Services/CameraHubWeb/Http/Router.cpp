#include "Services/CameraHubWeb/Http/Router.h"

#include "Services/CameraHubWeb/Http/Problems.h"

#include <algorithm>
#include <utility>

namespace CameraHubWeb {

bool Router::Route::takes(const std::string& asked) const {
    return asked == method || (asked == "HEAD" && method == "GET" && head == HeadRequests::Taken);
}

bool Router::Route::matches(const std::vector<std::string>& segments) const {
    return std::equal(pattern.begin(), pattern.end(), segments.begin(), segments.end(),
                      [](const std::string& wanted, const std::string& segment) {
                          return wanted == "*" ? !segment.empty() : wanted == segment;
                      });
}

void Router::add(std::string method, std::vector<std::string> pattern, Handler handler, HeadRequests head) {
    _routes.push_back({std::move(method), std::move(pattern), std::move(handler), head});
}

void Router::handle(const std::shared_ptr<HttpExchange>& exchange) const {
    const HttpRequest& request = exchange->request();
    for (const Route& route : _routes)
        if (route.takes(request.method) && route.matches(request.segments)) {
            std::vector<std::string> values;
            for (std::size_t i = 0; i < route.pattern.size(); ++i)
                if (route.pattern[i] == "*")
                    values.push_back(request.segments[i]);
            route.handler(exchange, std::move(values));
            return;
        }
    const std::string allow = allowed(request.segments);
    if (allow.empty())
        exchange->send(problemResponse(Problems::notFound()));
    else if (request.method == "OPTIONS")
        exchange->send({204, {{"Allow", allow}}, nullptr, 0, 0});
    else
        exchange->send(problemResponse(Problems::methodNotAllowed(allow)));
}

std::string Router::allowed(const std::vector<std::string>& segments) const {
    std::string allow;
    for (const std::string method : {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE"})
        if (std::any_of(_routes.begin(), _routes.end(),
                        [&](const Route& route) { return route.takes(method) && route.matches(segments); }))
            allow += method + ", ";
    return allow.empty() ? allow : allow + "OPTIONS";
}

} // namespace CameraHubWeb
