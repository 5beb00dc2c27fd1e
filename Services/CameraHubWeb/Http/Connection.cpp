#include "Services/CameraHubWeb/Http/Connection.h"

#include "Services/CameraHubWeb/Http/Problems.h"

#include <algorithm>
#include <array>
#include <boost/asio/co_spawn.hpp>
#include <cstdio>
#include <exception>
#include <utility>

namespace asio = boost::asio;

namespace CameraHubWeb {
namespace {

/// For a client to see its last answer and to close.
constexpr std::chrono::seconds lingerTime(5);

Channel::Time after(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

bool mayHaveBody(int status) { return status != 204 && status != 304; }

asio::const_buffer bodyOf(const HttpResponse& response) {
    if (!response.body)
        return {};
    const std::size_t size = response.body->size();
    const std::size_t offset = std::min(response.offset, size);
    return {response.body->data() + offset, std::min(response.length, size - offset)};
}

std::vector<asio::const_buffer> buffersOf(std::string_view text) { return {asio::buffer(text)}; }

/// Tells a stream that it has ended, however that comes.
class StreamEnd {
public:
    explicit StreamEnd(BodyStream& stream) : _stream(stream) {}
    ~StreamEnd() { _stream.ended(); }
    StreamEnd(const StreamEnd&) = delete;
    StreamEnd& operator=(const StreamEnd&) = delete;

private:
    BodyStream& _stream;
};

} // namespace

Connection::Connection(std::shared_ptr<const Service> service, asio::io_context& context,
                       std::unique_ptr<Transport> transport, std::string peer, std::optional<Problem> refusal)
    : _service(std::move(service)), _context(context),
      _channel(std::make_shared<Channel>(context, std::move(transport))), _peer(std::move(peer)),
      _refusal(std::move(refusal)), _reader(_service->limits) {}

void Connection::start(std::function<void()> over) {
    _over = std::move(over);
    // An exception, of memory that is lacking, ends this connection alone.
    asio::co_spawn(_context, run(), [self = shared_from_this()](const std::exception_ptr&) { self->finish(); });
}

void Connection::finish() {
    _channel->close();
    if (_pending)
        _pending->abandon();
    _over();
}

asio::awaitable<void> Connection::run() {
    const bool isOpen = co_await _channel->handshake(after(_service->limits.requestTime));
    if (!isOpen)
        co_return;
    while (!_isLast) {
        const Reading reading = co_await readRequest();
        if (reading == Reading::Gone)
            co_return;
        bool isSent = false;
        if (reading == Reading::Refused) {
            _isLast = true;
            isSent = co_await send(problemResponse(*_refusal));
        } else {
            const std::optional<Answer> answer = co_await handle();
            if (!answer)
                co_return;
            if (answer->stream)
                isSent = co_await sendStream(answer->response, *answer->stream);
            else
                isSent = co_await send(answer->response);
        }
        if (!isSent)
            co_return;
    }
    co_await _channel->linger(after(lingerTime));
}

asio::awaitable<Connection::Reading> Connection::readRequest() {
    Channel::Time deadline = after(_service->limits.idleTime);
    bool hasBegun = false;
    for (;;) {
        _reader.append(_channel->takeInput());
        const RequestReader::Step step = _reader.advance();
        if (step == RequestReader::Step::Complete)
            co_return _refusal ? Reading::Refused : Reading::Complete;
        if (step == RequestReader::Step::Refused) {
            _refusal = _reader.problem();
            co_return Reading::Refused;
        }
        if (step == RequestReader::Step::WantsContinue) {
            const bool isSent = co_await sendContinue();
            if (!isSent)
                co_return Reading::Gone;
        }
        if (!hasBegun && _reader.hasBegun()) {
            hasBegun = true;
            deadline = after(_service->limits.requestTime);
        }
        _channel->startReading();
        if (_channel->isGone())
            co_return Reading::Gone;
        const bool isInTime = co_await _channel->changed(deadline);
        if (!isInTime && hasBegun) {
            _refusal = Problems::requestTimeout();
            co_return Reading::Refused;
        }
        if (!isInTime)
            co_return Reading::Gone;
    }
}

asio::awaitable<bool> Connection::sendContinue() {
    static constexpr std::string_view text = "HTTP/1.1 100 Continue\r\n\r\n";
    co_return co_await _channel->write(buffersOf(text), _service->limits.writeTime);
}

std::function<void()> Connection::waker() {
    return [mailbox = _service->mailbox, weak = std::weak_ptr(_channel)] {
        mailbox->post([weak] {
            if (const auto channel = weak.lock())
                channel->wake();
        });
    };
}

asio::awaitable<std::optional<Answer>> Connection::handle() {
    _isLast = !_reader.keepsAlive();
    _pending = std::make_shared<PendingAnswer>(waker());
    callHandler();
    std::optional<Answer> answer = _pending->take();
    while (!answer) {
        _channel->startReading();
        if (_channel->isGone())
            co_return std::nullopt;
        co_await _channel->changed(Channel::Time::max());
        answer = _pending->take();
    }
    co_return answer;
}

void Connection::callHandler() {
    HttpRequest request = _reader.take();
    request.peer = _peer;
    const std::shared_ptr<HttpExchange> exchange = makeExchange(std::move(request), _pending);
    try {
        _service->handler(exchange);
    } catch (...) {
        exchange->send(problemResponse(Problems::unexpected()));
    }
}

std::string Connection::headFor(const HttpResponse& response, Framing framing) const {
    if (_isLast)
        framing.connection = "close";
    else if (_reader.isHttp10())
        framing.connection = "keep-alive";
    return responseHead(response, _service->commonHeaders, framing);
}

asio::awaitable<bool> Connection::send(const HttpResponse& response) {
    const asio::const_buffer body = bodyOf(response);
    Framing framing;
    if (mayHaveBody(response.status))
        framing.length = body.size();
    const std::string head = headFor(response, framing);
    std::vector<asio::const_buffer> buffers{asio::buffer(head)};
    if (mayHaveBody(response.status) && !_reader.isHead())
        buffers.push_back(body);
    co_return co_await _channel->write(std::move(buffers), _service->limits.writeTime);
}

asio::awaitable<bool> Connection::sendStream(const HttpResponse& head, BodyStream& body) {
    const StreamEnd end(body);
    Framing framing;
    framing.isChunked = !_reader.isHttp10();
    _isLast = _isLast || _reader.isHttp10(); // there, the end of the connection is the end of the body
    const std::string text = headFor(head, framing);
    const bool isSent = co_await _channel->write(buffersOf(text), _service->limits.writeTime);
    if (!isSent || _reader.isHead())
        co_return isSent;
    co_return co_await sendPieces(body, framing.isChunked);
}

asio::awaitable<bool> Connection::sendPieces(BodyStream& body, bool isChunked) {
    for (;;) {
        const auto pending = std::make_shared<PendingPiece>(waker());
        body.next([pending](SharedBytes piece) { pending->give(std::move(piece)); });
        std::optional<SharedBytes> piece = pending->take();
        while (!piece) {
            _channel->startReading();
            if (_channel->isGone())
                co_return false;
            co_await _channel->changed(Channel::Time::max());
            piece = pending->take();
        }
        if (!*piece)
            break;
        const bool isSent = co_await sendPiece(**piece, isChunked);
        if (!isSent)
            co_return false;
    }
    static constexpr std::string_view lastChunk = "0\r\n\r\n";
    if (isChunked)
        co_return co_await _channel->write(buffersOf(lastChunk), _service->limits.writeTime);
    co_return true;
}

asio::awaitable<bool> Connection::sendPiece(const std::vector<std::uint8_t>& piece, bool isChunked) {
    if (piece.empty()) // as a chunk it would be the last one
        co_return true;
    std::array<char, 24> size{};
    std::snprintf(size.data(), size.size(), "%zx\r\n", piece.size());
    const std::string_view before = isChunked ? size.data() : "";
    const std::string_view behind = isChunked ? "\r\n" : "";
    std::vector<asio::const_buffer> buffers{asio::buffer(before), asio::buffer(piece), asio::buffer(behind)};
    co_return co_await _channel->write(std::move(buffers), _service->limits.writeTime);
}

} // namespace CameraHubWeb
