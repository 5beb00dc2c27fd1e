#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"
#include "Services/CameraHubWeb/Http/Problem.h"
#include "Services/CameraHubWeb/Http/ServerLimits.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace CameraHubWeb {

/// Makes requests of the bytes of a connection, one after another. Whatever two programs might read differently is
/// refused.
class RequestReader {
public:
    enum class Step : std::uint8_t {
        NeedsMore,     ///< Bytes are lacking.
        WantsContinue, ///< Told once: the client waits for "100 Continue" before it sends the body.
        Complete,      ///< For take().
        Refused,       ///< For good: see problem().
    };

    explicit RequestReader(const ServerLimits& limits);
    ~RequestReader();
    RequestReader(const RequestReader&) = delete;
    RequestReader& operator=(const RequestReader&) = delete;

    /// Whether bytes may be added: what it holds is bounded.
    bool hasRoom() const { return _input.size() < _limits.headBytes; }

    void append(std::string_view bytes) { _input += bytes; }

    Step advance();

    /// Whether a byte of a request that is not complete has come.
    bool hasBegun() const { return _parser || !_input.empty(); }

    /// The request that is complete; the next call of advance() is for the next one.
    HttpRequest take();

    /// Why it was refused.
    const Problem& problem() const { return *_problem; }

    // Of the request that was taken last, or refused.

    bool isHead() const { return _request.method == "HEAD"; }
    bool isHttp10() const { return _isHttp10; }
    bool keepsAlive() const { return _keepsAlive; }

private:
    struct Parser;

    /// The length of the head with its empty line, as soon as all of it is there.
    std::optional<std::size_t> findHeadEnd();
    Step readHead();
    Step readBody();
    Step refuse(Problem problem);
    Step refuse(std::string detail);
    Step refuseLongHead();
    /// Throws std::invalid_argument, its text for the client.
    void checkFraming() const;
    void checkHost() const;
    void takeHeaders();

    const ServerLimits _limits;
    std::string _input;
    std::size_t _scanned = 0; // of the input, for the end of the head
    bool _hasOddLine = false;
    std::unique_ptr<Parser> _parser; // from the end of a head on
    bool _mayWantContinue = false;
    HttpRequest _request;
    bool _isHttp10 = false;
    bool _keepsAlive = false;
    std::optional<Problem> _problem;
};

} // namespace CameraHubWeb
