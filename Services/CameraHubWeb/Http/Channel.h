#pragma once

#include "Services/CameraHubWeb/Http/Transport.h"

#include <array>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace CameraHubWeb {

/// What one coroutine does with a transport, all of it with deadlines: reading goes on beside whatever it waits for,
/// and it wakes at each change to look at what it waits for. On the server's thread.
class Channel : public std::enable_shared_from_this<Channel> {
public:
    using Time = std::chrono::steady_clock::time_point;

    Channel(boost::asio::io_context& context, std::unique_ptr<Transport> transport);

    /// False where it failed, or was not done in time.
    boost::asio::awaitable<bool> handshake(Time deadline);

    /// Until something may have changed, at times for nothing. False when the time is over.
    boost::asio::awaitable<bool> changed(Time deadline);

    void wake() { _timer.cancel(); }

    /// Reads what comes next, unless it does already or nobody has taken what came before.
    void startReading();

    /// What came since the last call.
    std::string takeInput();

    /// The client sends no more, or this was closed.
    bool isGone() const { return _hasInputEnded || _isClosed; }

    /// False where not all could be written: no byte went for this long, or the client has gone. The bytes live until
    /// then.
    boost::asio::awaitable<bool> write(std::vector<boost::asio::const_buffer> buffers, std::chrono::milliseconds time);

    /// Ends the sending, and throws away what still comes: a socket that is closed with bytes unread takes from the
    /// client what it was sent last.
    boost::asio::awaitable<void> linger(Time deadline);

    void close();

private:
    void received(const boost::system::error_code& error, std::size_t count);
    void startDraining();
    void startWriting(const std::vector<boost::asio::const_buffer>& buffers);

    const std::unique_ptr<Transport> _transport;
    boost::asio::steady_timer _timer;
    std::array<char, 8192> _readBuffer{};
    std::string _input;
    bool _isReading = false;
    bool _hasInputEnded = false;
    bool _isWriting = false;
    bool _hasWriteFailed = false;
    std::size_t _written = 0;
    bool _isHandshakeOver = false;
    bool _hasHandshakeFailed = false;
    bool _isLingering = false;
    bool _isFinished = false;
    bool _isClosed = false;
};

} // namespace CameraHubWeb
