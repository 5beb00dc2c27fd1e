#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"

#include <functional>
#include <memory>

namespace CameraHubWeb {

/// What an answer without an end is made of: asked for each piece when the one before has been written, so that a slow
/// client gets the newest and costs no memory.
class BodyStream {
public:
    virtual ~BodyStream() = default;

    /// Has `ready` called once, on any thread, also before this returns: with the next piece when there is one, or with
    /// null, which ends the answer. It is not called again before that. Any thread.
    virtual void next(std::function<void(SharedBytes)> ready) = 0;

    /// The client has gone, or the server ends: nothing will be asked for any more, and a `ready` that waits may be
    /// dropped. Called once, also after an end. Any thread.
    virtual void ended() = 0;
};

/// A request and the way to answer it, exactly once, on any thread, at any time. One that is dropped unanswered is
/// answered with 500.
class HttpExchange {
public:
    virtual ~HttpExchange() = default;

    virtual const HttpRequest& request() const = 0;

    /// For HEAD the body is left out.
    virtual void send(HttpResponse response) = 0;

    /// The head's body is not sent, but what the stream gives.
    virtual void stream(HttpResponse head, std::shared_ptr<BodyStream> body) = 0;

    /// Has it called once, on any thread, if the client goes before it was answered, or the server ends; at once if
    /// that has happened already. A client that only says that it sends no more counts as one that has gone.
    virtual void whenGone(std::function<void()> gone) = 0;
};

/// Called on the server's thread: it must not block, and may answer later. What it throws is answered with 500.
using HttpHandler = std::function<void(std::shared_ptr<HttpExchange>)>;

} // namespace CameraHubWeb
