#pragma once

#include "Services/CameraHubWeb/Http/Channel.h"
#include "Services/CameraHubWeb/Http/Mailbox.h"
#include "Services/CameraHubWeb/Http/PendingAnswer.h"
#include "Services/CameraHubWeb/Http/RequestReader.h"
#include "Services/CameraHubWeb/Http/ResponseHead.h"
#include "Services/CameraHubWeb/Http/ServerLimits.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace CameraHubWeb {

/// What all connections of a server have in common.
struct Service {
    ServerLimits limits;
    HttpHandler handler;
    HeaderList commonHeaders;
    std::shared_ptr<Mailbox> mailbox;
};

/// A client's connection: one request after the other, each read, handled and answered before the next. On the server's
/// thread.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    /// With a refusal, the first request is answered with it and nothing is handled.
    Connection(std::shared_ptr<const Service> service, boost::asio::io_context& context,
               std::unique_ptr<Transport> transport, std::string peer, std::optional<Problem> refusal);

    /// Calls back once, when the connection is over.
    void start(std::function<void()> over);

    /// Ends it, whatever it is at.
    void end() { _channel->close(); }

private:
    enum class Reading : std::uint8_t { Complete, Refused, Gone };

    boost::asio::awaitable<void> run();
    boost::asio::awaitable<Reading> readRequest();
    boost::asio::awaitable<bool> sendContinue();
    /// The answer of the handler; none where the client goes before.
    boost::asio::awaitable<std::optional<Answer>> handle();
    void callHandler();
    boost::asio::awaitable<bool> send(const HttpResponse& response);
    boost::asio::awaitable<bool> sendStream(const HttpResponse& head, BodyStream& body);
    boost::asio::awaitable<bool> sendPieces(BodyStream& body, bool isChunked);
    boost::asio::awaitable<bool> sendPiece(const std::vector<std::uint8_t>& piece, bool isChunked);
    std::string headFor(const HttpResponse& response, Framing framing) const;
    std::function<void()> waker();
    void finish();

    const std::shared_ptr<const Service> _service;
    boost::asio::io_context& _context;
    const std::shared_ptr<Channel> _channel;
    const std::string _peer;
    std::optional<Problem> _refusal;
    RequestReader _reader;
    bool _isLast = false; // the answer to the request at work
    std::shared_ptr<PendingAnswer> _pending;
    std::function<void()> _over;
};

} // namespace CameraHubWeb
