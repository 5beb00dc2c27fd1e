#include "Services/CameraHubWeb/Http/Transport.h"

#include <boost/asio/post.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <utility>

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace CameraHubWeb {
namespace {

void shutDownSending(tcp::socket& socket) {
    error_code ignored;
    static_cast<void>(socket.shutdown(tcp::socket::shutdown_send, ignored));
}

void closeSocket(tcp::socket& socket) {
    error_code ignored;
    static_cast<void>(socket.close(ignored));
}

class PlainTransport : public Transport {
public:
    explicit PlainTransport(tcp::socket socket) : _socket(std::move(socket)) {}

    void handshake(Finished finished) override {
        asio::post(_socket.get_executor(), [finished = std::move(finished)] { finished({}); });
    }

    void read(asio::mutable_buffer buffer, Transferred transferred) override {
        _socket.async_read_some(buffer, std::move(transferred));
    }

    void write(const std::vector<asio::const_buffer>& buffers, Transferred transferred) override {
        _socket.async_write_some(buffers, std::move(transferred));
    }

    void finish(Finished finished) override {
        shutDownSending(_socket);
        asio::post(_socket.get_executor(), [finished = std::move(finished)] { finished({}); });
    }

    void drain(asio::mutable_buffer buffer, Transferred transferred) override { read(buffer, std::move(transferred)); }

    void close() override { closeSocket(_socket); }

private:
    tcp::socket _socket;
};

class TlsTransport : public Transport {
public:
    TlsTransport(tcp::socket socket, asio::ssl::context& context) : _stream(std::move(socket), context) {}

    void handshake(Finished finished) override {
        _stream.async_handshake(asio::ssl::stream_base::server, std::move(finished));
    }

    void read(asio::mutable_buffer buffer, Transferred transferred) override {
        _stream.async_read_some(buffer, std::move(transferred));
    }

    void write(const std::vector<asio::const_buffer>& buffers, Transferred transferred) override {
        _stream.async_write_some(buffers, std::move(transferred));
    }

    void finish(Finished finished) override {
        _stream.async_shutdown([this, finished = std::move(finished)](const error_code& error) {
            shutDownSending(_stream.next_layer());
            finished(error);
        });
    }

    void drain(asio::mutable_buffer buffer, Transferred transferred) override {
        _stream.next_layer().async_read_some(buffer, std::move(transferred));
    }

    void close() override { closeSocket(_stream.next_layer()); }

private:
    asio::ssl::stream<tcp::socket> _stream;
};

} // namespace

std::unique_ptr<Transport> makePlainTransport(tcp::socket socket) {
    return std::make_unique<PlainTransport>(std::move(socket));
}

std::unique_ptr<Transport> makeTlsTransport(tcp::socket socket, asio::ssl::context& context) {
    return std::make_unique<TlsTransport>(std::move(socket), context);
}

} // namespace CameraHubWeb
