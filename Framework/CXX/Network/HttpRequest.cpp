#include "Framework/CXX/Network/HttpRequest.h"

#include "Framework/CXX/Network/HttpClient.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace {

/// Cuts the front off a line up to any of the separators, and one separator. False if there was none:
/// the token is then all that was left.
bool takeToken(std::string_view& rest, std::string_view separators, std::string& token) {
    const std::size_t end = rest.find_first_of(separators);
    token = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return end != std::string_view::npos;
}

int hexDigitValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return 0; // what is no digit counts as nothing
}

/// Decodes from the start again after each replacement: a "%" that decoding produced is decoded with what
/// follows it. Ends at the first "%" with fewer than two characters behind it.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    while (!text.empty()) {
        char character = text.front();
        text.remove_prefix(1);
        while (character == '%' && text.size() >= 2) {
            character = static_cast<char>(hexDigitValue(text[0]) * 16 + hexDigitValue(text[1]));
            text.remove_prefix(2);
        }
        decoded += character;
    }
    return decoded;
}

} // namespace

HttpRequest::HttpRequest(HttpClient* owner) : client(owner) {}

bool HttpRequest::parseRequestLine(const char* line) {
    std::string_view rest(line);
    if (!takeToken(rest, " \r\n", method) || !takeToken(rest, " \r\n", url))
        return false;
    takeToken(rest, " \r\n", version);

    const std::size_t questionMark = url.find('?');
    path = url.substr(0, questionMark);
    if (questionMark != std::string::npos)
        query = percentDecoded(std::string_view(url).substr(questionMark + 1));
    return true;
}

bool HttpRequest::parseHeaderLine(const char* line) {
    std::string_view rest(line);
    std::string name;
    if (!takeToken(rest, ":\r\n", name))
        return false;
    const std::size_t valueBegin = rest.find_first_not_of(" \t");
    rest.remove_prefix(valueBegin == std::string_view::npos ? rest.size() : valueBegin);
    takeToken(rest, "\r\n", headers[name]);
    return true;
}

std::string& HttpRequest::contentType() { return headers["Content-Type"]; }

uint64_t HttpRequest::contentLength() const {
    const auto header = headers.find("Content-Length");
    uint64_t length = 0;
    if (header == headers.end() || !(std::istringstream(header->second) >> length))
        return 0;
    return length;
}

void HttpRequest::setBodyHandler(std::function<void(const char*, size_t)> handler) {
    const uint64_t length = contentLength();
    if (length > 0) {
        hasBodyHandler = true;
        client->setBodyHandler(length, std::move(handler));
    }
}

int HttpRequest::clientId() const { return client->id(); }
