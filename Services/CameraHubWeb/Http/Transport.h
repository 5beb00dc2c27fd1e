#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace CameraHubWeb {

/// The bytes of a connection, plain or in TLS: one read and one write at a time. On the server's thread; what it calls
/// back is never called before the call returns, and always at some time, with an error once it is closed.
class Transport {
public:
    using Finished = std::function<void(const boost::system::error_code&)>;
    using Transferred = std::function<void(const boost::system::error_code&, std::size_t)>;

    virtual ~Transport() = default;

    /// First of all.
    virtual void handshake(Finished finished) = 0;

    /// Some bytes. The buffer lives until it calls back.
    virtual void read(boost::asio::mutable_buffer buffer, Transferred transferred) = 0;

    /// As much as goes. What the buffers point to lives until it calls back.
    virtual void write(const std::vector<boost::asio::const_buffer>& buffers, Transferred transferred) = 0;

    /// Tells the client that nothing follows, as far as it listens.
    virtual void finish(Finished finished) = 0;

    /// Some bytes of whatever the client still sends after that, to be thrown away.
    virtual void drain(boost::asio::mutable_buffer buffer, Transferred transferred) = 0;

    virtual void close() = 0;
};

std::unique_ptr<Transport> makePlainTransport(boost::asio::ip::tcp::socket socket);

/// The context outlives the transport.
std::unique_ptr<Transport> makeTlsTransport(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context);

} // namespace CameraHubWeb
