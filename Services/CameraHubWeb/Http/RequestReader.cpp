#include "Services/CameraHubWeb/Http/RequestReader.h"

#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Http/RequestDecoding.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace http = boost::beast::http;

namespace CameraHubWeb {
namespace {

std::string inSmallLetters(std::string_view name) {
    std::string small(name);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

std::string_view view(boost::beast::string_view text) { return {text.data(), text.size()}; }

} // namespace

struct RequestReader::Parser {
    http::request_parser<http::string_body> http;

    std::size_t count(http::field name) const { return http.get().count(name); }

    bool has(http::field name, boost::beast::string_view value) const {
        return boost::beast::iequals(http.get()[name], value);
    }
};

RequestReader::RequestReader(const ServerLimits& limits) : _limits(limits) {}

RequestReader::~RequestReader() = default;

RequestReader::Step RequestReader::advance() {
    if (_problem)
        return Step::Refused;
    if (_parser)
        return readBody();
    if (_scanned == 0) // some send an empty line after a body
        _input.erase(0, std::min(_input.find_first_not_of("\r\n"), _input.size()));
    if (_input.empty())
        return Step::NeedsMore;
    _request.method.clear();
    // No method begins so, but the greeting of TLS does: it would wait for an answer in vain.
    if (!std::isalpha(static_cast<unsigned char>(_input.front())))
        return refuse("The request does not begin with a method.");
    return readHead();
}

std::optional<std::size_t> RequestReader::findHeadEnd() {
    for (; !_hasOddLine; ++_scanned) {
        _scanned = std::min(_input.find('\n', _scanned), _input.size());
        if (_scanned == _input.size())
            return std::nullopt;
        const std::string_view rest = std::string_view(_input).substr(_scanned + 1);
        _hasOddLine = _scanned == 0 || _input[_scanned - 1] != '\r' || rest.starts_with(' ') || rest.starts_with('\t');
        if (rest.starts_with("\r\n"))
            return _scanned + 3;
        if (rest.empty() || rest == "\r")
            return std::nullopt; // what follows must be seen together with this line's end
    }
    return std::nullopt;
}

RequestReader::Step RequestReader::readHead() {
    const auto end = findHeadEnd();
    if (_hasOddLine)
        return refuse("The request's head has a line that does not end, or does not begin, as HTTP/1.1 has it.");
    if (!end && hasRoom())
        return Step::NeedsMore;
    if (!end || *end > _limits.headBytes)
        return refuseLongHead();

    _parser = std::make_unique<Parser>();
    _parser->http.header_limit(static_cast<std::uint32_t>(*end + 1));
    _parser->http.body_limit(_limits.bodyBytes);
    boost::beast::error_code error;
    _parser->http.put(boost::asio::buffer(_input.data(), *end), error);
    _input.erase(0, *end);
    _scanned = 0;
    _request.method = view(_parser->http.get().method_string());
    _isHttp10 = _parser->http.get().version() == 10;
    if (error == http::error::body_limit)
        return refuse(Problems::bodyTooLarge(_limits.bodyBytes));
    if (error)
        return refuse("The request is not as HTTP/1.1 has it: " + error.message() + ".");
    if (_parser->http.get().target().size() > _limits.targetBytes)
        return refuse(Problems::targetTooLarge(_limits.targetBytes));
    try {
        checkFraming();
        checkHost();
        takeHeaders();
    } catch (const std::invalid_argument& invalid) {
        return refuse(invalid.what());
    }
    return readBody();
}

void RequestReader::checkFraming() const {
    const unsigned version = _parser->http.get().version();
    if (version != 10 && version != 11)
        throw std::invalid_argument("The request is for another version of HTTP than 1.0 and 1.1.");
    const std::size_t lengths = _parser->count(http::field::content_length);
    const std::size_t encodings = _parser->count(http::field::transfer_encoding);
    if (lengths + encodings > 1)
        throw std::invalid_argument("The request says more than once how long its body is.");
    if (lengths == 1 && view(_parser->http.get()[http::field::content_length]).find(',') != std::string_view::npos)
        throw std::invalid_argument("The header Content-Length takes one number.");
    if (encodings == 1 && (version == 10 || !_parser->has(http::field::transfer_encoding, "chunked")))
        throw std::invalid_argument("The header Transfer-Encoding takes \"chunked\" alone, and HTTP/1.1.");
}

void RequestReader::checkHost() const {
    const std::size_t hosts = _parser->count(http::field::host);
    if (hosts > 1 || (hosts == 0 && !_isHttp10))
        throw std::invalid_argument("The request must have the header Host exactly once.");
}

void RequestReader::takeHeaders() {
    const auto& head = _parser->http.get();
    DecodedTarget target = decodeTarget(view(head.target()));
    _request.segments = std::move(target.segments);
    _request.query = std::move(target.query);
    for (const auto& field : head) {
        std::string& value = _request.headers[inSmallLetters(view(field.name_string()))];
        if (!value.empty())
            value += ", ";
        value += view(field.value());
    }
    _keepsAlive = _parser->http.keep_alive();
    _mayWantContinue = !_isHttp10 && _parser->has(http::field::expect, "100-continue");
}

RequestReader::Step RequestReader::readBody() {
    while (!_parser->http.is_done()) {
        boost::beast::error_code error = http::error::need_more;
        if (!_input.empty())
            _input.erase(0, _parser->http.put(boost::asio::buffer(_input), error));
        if (error == http::error::body_limit)
            return refuse(Problems::bodyTooLarge(_limits.bodyBytes));
        if (error && error != http::error::need_more)
            return refuse("The request's body is not as HTTP/1.1 has it: " + error.message() + ".");
        if (!error)
            continue;
        if (!hasRoom()) // a line of a chunked body has no bound of its own
            return refuse("The request's chunked body has a line that is too long.");
        const bool wantsContinue = std::exchange(_mayWantContinue, false) && _input.empty();
        return wantsContinue ? Step::WantsContinue : Step::NeedsMore;
    }
    return Step::Complete;
}

RequestReader::Step RequestReader::refuse(Problem problem) {
    _problem = std::move(problem);
    _keepsAlive = false;
    return Step::Refused;
}

RequestReader::Step RequestReader::refuse(std::string detail) {
    return refuse(Problems::invalidRequest(std::move(detail)));
}

RequestReader::Step RequestReader::refuseLongHead() {
    const bool isTargetLong = _input.find('\n') >= _limits.headBytes;
    return refuse(isTargetLong ? Problems::targetTooLarge(_limits.targetBytes)
                               : Problems::headTooLarge(_limits.headBytes));
}

HttpRequest RequestReader::take() {
    _request.body = std::move(_parser->http.get().body());
    _parser.reset();
    HttpRequest taken = std::move(_request);
    _request = HttpRequest{};
    _request.method = taken.method; // for isHead()
    return taken;
}

} // namespace CameraHubWeb
