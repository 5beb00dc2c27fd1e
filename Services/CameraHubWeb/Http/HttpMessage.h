#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace CameraHubWeb {

/// Bytes that several answers may share.
using SharedBytes = std::shared_ptr<const std::vector<std::uint8_t>>;

/// A request, read completely and decoded.
struct HttpRequest {
    /// "GET"; in capitals as a rule, but whatever was sent.
    std::string method;
    /// The parts of the path between its slashes, percent-decoded and in UTF-8: {"api", "cameras"}; none for "/". A
    /// part may have slashes in it that were sent as %2F, and be empty.
    std::vector<std::string> segments;
    /// Percent-decoded, a plus being a space, in UTF-8. A name that comes twice, or what cannot be decoded, was
    /// refused.
    std::map<std::string, std::string, std::less<>> query;
    /// By their names in small letters; a header that came several times has its values joined by ", ".
    std::map<std::string, std::string, std::less<>> headers;
    std::string body;
    /// The client's address, without the port.
    std::string peer;

    /// Null where the header was not sent. The name is in small letters.
    const std::string* header(std::string_view name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? nullptr : &found->second;
    }
};

/// What answers a request. The server adds the length, the connection's headers, and those that every answer has.
struct HttpResponse {
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    /// Null: no body.
    SharedBytes body;
    /// The part of the body to send.
    std::size_t offset = 0;
    std::size_t length = 0;
};

/// The whole text as a body.
HttpResponse textResponse(int status, std::string_view contentType, std::string_view text);

} // namespace CameraHubWeb
