#include "Tests/Services/CameraHubWeb/Http/RawClient.h"

#include "Tests/Support/WaitUntil.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <stdexcept>

struct RawClient::Tls {
    explicit Tls(int socket) : context(SSL_CTX_new(TLS_client_method())), ssl(SSL_new(context)) {
        SSL_set_fd(ssl, socket);
        isOpen = SSL_connect(ssl) == 1;
    }

    ~Tls() {
        SSL_free(ssl);
        SSL_CTX_free(context);
    }

    Tls(const Tls&) = delete;
    Tls& operator=(const Tls&) = delete;

    SSL_CTX* context;
    SSL* ssl;
    bool isOpen = false;
};

namespace {

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what + ": " + std::strerror(errno)); }

} // namespace

RawClient::RawClient(std::uint16_t port, Security security, const std::string& address)
    : _socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval wait{patience.count(), 0};
    setsockopt(_socket, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    setsockopt(_socket, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &server.sin_addr);
    if (::connect(_socket, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) {
        ::close(_socket);
        fail("connect");
    }
    if (security == Security::Tls) {
        _tls = std::make_unique<Tls>(_socket);
        if (!_tls->isOpen) {
            ::close(_socket);
            fail("TLS handshake");
        }
    }
}

RawClient::~RawClient() { close(); }

void RawClient::close() {
    _tls.reset();
    if (_socket >= 0)
        ::close(_socket);
    _socket = -1;
}

void RawClient::closeSending() const { ::shutdown(_socket, SHUT_WR); }

void RawClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count =
            _tls ? static_cast<ssize_t>(SSL_write(_tls->ssl, bytes.data(), static_cast<int>(bytes.size())))
                 : ::send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            fail("send");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::size_t RawClient::sendWhatGoes(std::string_view bytes) {
    const ssize_t count = ::send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

bool RawClient::hasReceived() const {
    char byte = 0;
    return ::recv(_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

bool RawClient::receiveMore() {
    std::array<char, 16384> bytes{};
    const auto count = _tls ? static_cast<ssize_t>(SSL_read(_tls->ssl, bytes.data(), static_cast<int>(bytes.size())))
                            : ::recv(_socket, bytes.data(), bytes.size(), 0);
    if (_tls && count <= 0 && SSL_get_error(_tls->ssl, static_cast<int>(count)) == SSL_ERROR_ZERO_RETURN)
        return false;
    if (count < 0 || (_tls && count == 0))
        fail("receive");
    _received.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
}

std::string RawClient::take(std::size_t count) {
    while (_received.size() < count)
        if (!receiveMore())
            throw std::runtime_error("the connection ended within an answer: " + _received.substr(0, 500));
    std::string taken = _received.substr(0, count);
    _received.erase(0, count);
    return taken;
}

std::string RawClient::receiveUntil(std::string_view marker) {
    std::size_t searched = 0; // up to where it does not begin
    for (;;) {
        const auto found = _received.find(marker, searched);
        if (found != std::string::npos)
            return take(found + marker.size());
        searched = _received.size() - std::min(_received.size(), marker.size() - 1);
        if (!receiveMore())
            throw std::runtime_error("the connection ended before \"" + std::string(marker) +
                                     "\": " + _received.substr(0, 500));
    }
}

std::string RawClient::receiveAll() {
    while (receiveMore()) {
    }
    return take(_received.size());
}

std::string RawClient::takeChunks() {
    std::string body;
    for (;;) {
        const std::size_t size = std::stoul(receiveUntil("\r\n"), nullptr, 16);
        const std::string chunk = take(size + 2);
        if (size == 0)
            return body;
        body += chunk.substr(0, size);
    }
}

RawAnswer RawClient::receiveAnswer(bool isToHead) {
    RawAnswer answer;
    if (_received.empty() && !receiveMore())
        return answer;
    std::istringstream head(receiveUntil("\r\n\r\n"));
    std::string line;
    std::getline(head, line);
    answer.version = line.substr(0, line.find(' '));
    answer.status = std::stoi(line.substr(line.find(' ')));
    while (std::getline(head, line) && line != "\r") {
        const auto colon = line.find(": ");
        std::string name = line.substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        answer.headers[name] = line.substr(colon + 2, line.size() - colon - 3);
    }
    if (isToHead || answer.status < 200)
        return answer;
    if (answer.headers.contains("content-length"))
        answer.body = take(std::stoul(answer.headers["content-length"]));
    else if (answer.headers.contains("transfer-encoding"))
        answer.body = takeChunks();
    else if (answer.status != 204 && answer.status != 304)
        answer.body = receiveAll();
    return answer;
}

RawAnswer askOnce(std::uint16_t port, std::string_view request) {
    RawClient client(port);
    client.send(request);
    return client.receiveAnswer(request.starts_with("HEAD "));
}
