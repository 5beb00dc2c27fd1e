#include "Services/CameraHubWeb/Http/Channel.h"

#include <algorithm>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <utility>

namespace asio = boost::asio;
using boost::system::error_code;

namespace CameraHubWeb {
namespace {

constexpr std::size_t inputBytes = 16 * 1024;

/// Takes the first bytes away, and buffers that are empty.
void consume(std::vector<asio::const_buffer>& buffers, std::size_t count) {
    while (!buffers.empty() && buffers.front().size() <= count) {
        count -= buffers.front().size();
        buffers.erase(buffers.begin());
    }
    if (!buffers.empty())
        buffers.front() += count;
}

} // namespace

Channel::Channel(asio::io_context& context, std::unique_ptr<Transport> transport)
    : _transport(std::move(transport)), _timer(context) {}

asio::awaitable<bool> Channel::handshake(Time deadline) {
    _transport->handshake([self = shared_from_this()](const error_code& error) {
        self->_isHandshakeOver = true;
        self->_hasHandshakeFailed = error.failed();
        self->wake();
    });
    while (!_isHandshakeOver) {
        const bool isInTime = co_await changed(deadline);
        if (!isInTime)
            close();
    }
    co_return !_hasHandshakeFailed && !_isClosed;
}

asio::awaitable<bool> Channel::changed(Time deadline) {
    _timer.expires_at(deadline);
    error_code error;
    co_await _timer.async_wait(asio::redirect_error(asio::use_awaitable, error));
    co_return error.failed();
}

void Channel::startReading() {
    if (_isReading || isGone() || _input.size() >= inputBytes)
        return;
    _isReading = true;
    _transport->read(
        asio::buffer(_readBuffer),
        [self = shared_from_this()](const error_code& error, std::size_t count) { self->received(error, count); });
}

void Channel::received(const error_code& error, std::size_t count) {
    _isReading = false;
    if (error)
        _hasInputEnded = true;
    else if (!_isLingering)
        _input.append(_readBuffer.data(), count);
    wake();
}

std::string Channel::takeInput() { return std::exchange(_input, std::string()); }

void Channel::startWriting(const std::vector<asio::const_buffer>& buffers) {
    _isWriting = true;
    _transport->write(buffers, [self = shared_from_this()](const error_code& error, std::size_t count) {
        self->_isWriting = false;
        self->_hasWriteFailed = error.failed();
        self->_written = count;
        self->wake();
    });
}

asio::awaitable<bool> Channel::write(std::vector<asio::const_buffer> buffers, std::chrono::milliseconds time) {
    consume(buffers, 0);
    while (!buffers.empty()) {
        if (_isClosed)
            co_return false;
        startWriting(buffers);
        const Time deadline = std::chrono::steady_clock::now() + time;
        while (_isWriting) { // also after close(): until then the buffers are in use
            const bool isInTime = co_await changed(deadline);
            if (!isInTime && _isWriting)
                close();
        }
        if (_hasWriteFailed)
            co_return false;
        consume(buffers, _written);
    }
    co_return !_isClosed;
}

void Channel::startDraining() {
    if (_isReading || isGone())
        return;
    _isReading = true;
    _transport->drain(
        asio::buffer(_readBuffer),
        [self = shared_from_this()](const error_code& error, std::size_t count) { self->received(error, count); });
}

asio::awaitable<void> Channel::linger(Time deadline) {
    if (_isClosed)
        co_return;
    _isLingering = true;
    _transport->finish([self = shared_from_this()](const error_code&) {
        self->_isFinished = true;
        self->wake();
    });
    while (!_isClosed && !(_isFinished && _hasInputEnded)) {
        if (_isFinished)
            startDraining();
        const bool isInTime = co_await changed(deadline);
        if (!isInTime)
            break;
    }
}

void Channel::close() {
    _isClosed = true;
    _transport->close();
    wake();
}

} // namespace CameraHubWeb
