#include "Services/CameraHubWeb/Http/HttpServer.h"

#include "Services/CameraHubWeb/Http/Connection.h"
#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Http/TlsContext.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <csignal>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace CameraHubWeb {
namespace {

/// How many clients are told at a time that there is no place for them; others are turned away without a word.
constexpr int refusedAtATime = 64;

/// Until it is tried again to accept, when the system lacks what that takes.
constexpr std::chrono::milliseconds acceptPause(100);

asio::ip::address clientAddress(const tcp::socket& socket) {
    asio::ip::address address = socket.remote_endpoint().address();
    if (address.is_v6() && address.to_v6().is_v4_mapped())
        return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
    return address;
}

tcp::acceptor listenOn(asio::io_context& context, const std::string& address, std::uint16_t port) {
    const std::string where = address + " port " + std::to_string(port);
    error_code error;
    const asio::ip::address parsed = asio::ip::make_address(address, error);
    if (error)
        throw std::runtime_error("Cannot listen on " + where + ": it is no IP address");
    try {
        return {context, tcp::endpoint(parsed, port)}; // the port may have connections that end yet
    } catch (const boost::system::system_error& failure) {
        throw std::runtime_error("Cannot listen on " + where + ": " + failure.code().message());
    }
}

/// A thread to which the system delivers no signals: those are for the program's others.
template <typename Work> std::thread threadWithoutSignals(Work work) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

} // namespace

class HttpServer::Implementation {
public:
    Implementation(const Settings& settings, HttpHandler handler)
        : _acceptor(listenOn(_context, settings.address, settings.port)), _service(std::make_shared<Service>()) {
        if (settings.tls)
            _tls.emplace(makeTlsContext(*settings.tls));
        _service->limits = settings.limits;
        _service->handler = std::move(handler);
        _service->commonHeaders = securityHeaders(_tls.has_value());
        _service->mailbox = std::make_shared<Mailbox>(_context);
        asio::co_spawn(_context, accept(), asio::detached);
        _thread = threadWithoutSignals([this] { _context.run(); });
    }

    /// The thread ends when nothing is left that it waits for.
    ~Implementation() {
        asio::post(_context, [this] {
            error_code ignored;
            static_cast<void>(_acceptor.close(ignored));
            for (const auto& connection : _connections)
                connection->end();
        });
        _thread.join();
        _service->mailbox->close();
    }

    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    std::uint16_t port() const { return _acceptor.local_endpoint().port(); }

private:
    asio::awaitable<void> accept() {
        asio::steady_timer pause(_context);
        for (;;) {
            error_code error;
            tcp::socket socket = co_await _acceptor.async_accept(asio::redirect_error(asio::use_awaitable, error));
            if (!_acceptor.is_open())
                co_return;
            if (!error)
                admit(std::move(socket));
            if (!error || error == asio::error::connection_aborted)
                continue;
            pause.expires_after(acceptPause);
            co_await pause.async_wait(asio::redirect_error(asio::use_awaitable, error));
        }
    }

    /// What fails here, because the client has gone or memory is lacking, closes its socket.
    void admit(tcp::socket socket) {
        try {
            const asio::ip::address address = clientAddress(socket);
            socket.set_option(tcp::no_delay(true));
            socket.set_option(asio::socket_base::keep_alive(true));
            const std::optional<Problem> refusal = reasonAgainst(address);
            if (!refusal || _refused < refusedAtATime)
                serve(std::move(socket), address, refusal);
        } catch (const std::exception&) {
        }
    }

    std::optional<Problem> reasonAgainst(const asio::ip::address& address) const {
        const ServerLimits& limits = _service->limits;
        if (_served >= limits.connections)
            return Problems::serverFull();
        const auto found = _ofAddress.find(address);
        if (!address.is_loopback() && found != _ofAddress.end() && found->second >= limits.connectionsOfAddress)
            return Problems::tooMany("This machine has too many connections to this program.", 5);
        return std::nullopt;
    }

    void serve(tcp::socket socket, const asio::ip::address& address, const std::optional<Problem>& refusal) {
        auto transport = _tls ? makeTlsTransport(std::move(socket), *_tls) : makePlainTransport(std::move(socket));
        const auto connection =
            std::make_shared<Connection>(_service, _context, std::move(transport), address.to_string(), refusal);
        _connections.insert(connection);
        const bool isServed = !refusal;
        ++(isServed ? _served : _refused);
        ++_ofAddress[address];
        connection->start([this, address, isServed, weak = std::weak_ptr(connection)] {
            --(isServed ? _served : _refused);
            if (--_ofAddress[address] == 0)
                _ofAddress.erase(address);
            _connections.erase(weak.lock());
        });
    }

    asio::io_context _context{1}; // outlives all that waits in it
    tcp::acceptor _acceptor;
    std::optional<asio::ssl::context> _tls;
    const std::shared_ptr<Service> _service;
    std::set<std::shared_ptr<Connection>> _connections;
    std::map<asio::ip::address, int> _ofAddress;
    int _served = 0;
    int _refused = 0;
    std::thread _thread;
};

HttpServer::HttpServer(const Settings& settings, HttpHandler handler)
    : _implementation(std::make_unique<Implementation>(settings, std::move(handler))) {}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::port() const { return _implementation->port(); }

} // namespace CameraHubWeb
