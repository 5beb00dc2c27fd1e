#include "Framework/CXX/Network/HttpRoute.h"

#include <utility>

namespace {

// The standard library's matcher calls itself for every character, with up to some 2 kB of stack each in a
// sanitizer build; far below this length it can't exhaust the 8 MB of the main thread.
constexpr std::size_t longPathSize = 1024;

/// The library's other matcher, which goes through the text once and keeps what it has under way on the heap. It
/// decides alike; only a group within a repeated group that matched nothing may be reported differently.
///
/// The standard has no name for this choice. `__polynomial` is libstdc++'s own: its headers document it as an
/// extension, for matching in polynomial time, and it changes nothing but how this one pattern is matched. With another
/// standard library the build stops here, and whoever brings it has to find out how much stack its matcher needs.
std::optional<std::regex> withoutRecursion(const std::string& patternText) {
    try {
        return std::regex(patternText, std::regex::ECMAScript | std::regex_constants::__polynomial);
    } catch (const std::regex_error&) {
        return std::nullopt; // it has no back-references
    }
}

} // namespace

HttpRoute::HttpRoute(const std::string& patternText, RouteHandler routeHandler)
    : pattern(patternText, std::regex::ECMAScript), patternForLongPaths(withoutRecursion(patternText)),
      handler(std::move(routeHandler)) {}

bool HttpRoute::accepts(HttpRequest& request) const {
    const std::string& path = request.path; // const, so that matches points into it
    const bool isLong = path.size() > longPathSize && patternForLongPaths.has_value();
    return std::regex_match(path, request.matches, isLong ? *patternForLongPaths : pattern);
}
