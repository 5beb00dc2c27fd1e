// A client that costs as little as it can, for a hub and for what a hub is compared with: on each of its connections it
// sends one request, reads the reply to its end, and sends the request again.
// Usage: ServingClient PORT END CONNECTIONS READ LIMIT EXPECTED <REQUEST
//   END       where a reply ends: "http", as its Content-Length says; else the number of the byte that ends it
//   READ      how many bytes it asks for at a time
//   LIMIT     "3s": for so many seconds; "20": so many requests on each connection
//   EXPECTED  a text that the first piece of each reply contains; another reply ends the client with 1
// Prints a JSON object: requests, seconds, bytes (read), and the times of a reply in seconds: median, p99.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

struct Options {
    std::uint16_t port = 0;
    bool isHttp = false;
    char lastByte = 0; // of a reply that is not HTTP's
    std::size_t connections = 1;
    std::size_t readSize = 0;
    std::size_t requestsEach = SIZE_MAX;
    Seconds limit = Seconds::max();
    std::string expected;
    std::string request;
};

int checked(int result, const char* what) {
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

/// What a reply lacks yet. One request is under way at a time: nothing follows a reply.
class ReplyEnd {
public:
    explicit ReplyEnd(const Options& options) : _options(options) {}

    /// Takes the next piece of a reply; true if that is its end. Throws std::runtime_error for one that is not
    /// expected.
    bool isReachedBy(std::string_view piece) {
        if (_isFirst && piece.find(_options.expected) == std::string_view::npos)
            throw std::runtime_error("unexpected reply: " + std::string(piece.substr(0, 200)));
        if (!_options.isHttp)
            return finish(piece.back() == _options.lastByte, piece.size());
        if (_isFirst)
            _missing = httpLength(piece);
        if (piece.size() > _missing)
            throw std::runtime_error("a reply is longer than its Content-Length");
        _missing -= piece.size();
        return finish(_missing == 0, piece.size());
    }

    std::size_t bytes() const { return _bytes; } // of all replies

private:
    /// Of head and body together.
    static std::size_t httpLength(std::string_view piece) {
        constexpr std::string_view name = "Content-Length: ";
        constexpr std::string_view blankLine = "\r\n\r\n";
        const std::size_t length = piece.find(name);
        const std::size_t end = piece.find(blankLine);
        if (length == std::string_view::npos || end == std::string_view::npos)
            throw std::runtime_error("a reply has no Content-Length, or its head does not come in one piece");
        return end + blankLine.size() + std::strtoull(piece.data() + length + name.size(), nullptr, 10);
    }

    bool finish(bool isEnd, std::size_t bytes) {
        _isFirst = isEnd;
        _bytes += bytes;
        return isEnd;
    }

    const Options& _options;
    bool _isFirst = true;
    std::size_t _missing = 0;
    std::size_t _bytes = 0;
};

struct Connection {
    int descriptor = -1;
    ReplyEnd end;
    Clock::time_point sent;
    std::size_t requests = 0; // that have been answered
};

class Client {
public:
    explicit Client(const Options& options) : _options(options), _buffer(options.readSize) {
        _epoll = checked(::epoll_create1(0), "epoll_create1");
        for (std::size_t i = 0; i < options.connections; ++i)
            _connections.push_back({connectTo(options.port), ReplyEnd(options), {}, 0});
        for (Connection& connection : _connections) {
            epoll_event event{};
            event.events = EPOLLIN;
            event.data.ptr = &connection;
            checked(::epoll_ctl(_epoll, EPOLL_CTL_ADD, connection.descriptor, &event), "epoll_ctl");
        }
    }

    void run() {
        const auto begin = Clock::now();
        for (Connection& connection : _connections)
            send(connection);
        std::array<epoll_event, 64> events;
        while (_underWay != 0) {
            const int count = checked(::epoll_wait(_epoll, events.data(), events.size(), -1), "epoll_wait");
            for (int i = 0; i < count; ++i)
                read(*static_cast<Connection*>(events[static_cast<std::size_t>(i)].data.ptr), begin);
        }
        print(Clock::now() - begin);
    }

private:
    static int connectTo(std::uint16_t port) {
        const int descriptor = checked(::socket(AF_INET, SOCK_STREAM, 0), "socket");
        const int on = 1;
        checked(::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)), "TCP_NODELAY");
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        checked(::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), "connect");
        return descriptor;
    }

    void send(Connection& connection) {
        connection.sent = Clock::now();
        const auto size = static_cast<ssize_t>(_options.request.size());
        if (::send(connection.descriptor, _options.request.data(), _options.request.size(), MSG_NOSIGNAL) != size)
            throw std::runtime_error("a request could not be sent at once");
        ++_underWay;
    }

    void read(Connection& connection, Clock::time_point begin) {
        const ssize_t size = checked(
            static_cast<int>(::recv(connection.descriptor, _buffer.data(), _buffer.size(), MSG_DONTWAIT)), "recv");
        if (size == 0)
            throw std::runtime_error("the server has closed a connection");
        if (!connection.end.isReachedBy({_buffer.data(), static_cast<std::size_t>(size)}))
            return;
        const auto now = Clock::now();
        _times.push_back(now - connection.sent);
        --_underWay;
        if (++connection.requests < _options.requestsEach && now - begin < _options.limit)
            send(connection);
    }

    double percentile(double part) {
        const auto rank = static_cast<std::size_t>(std::lround(part * static_cast<double>(_times.size() - 1)));
        std::ranges::nth_element(_times, _times.begin() + static_cast<std::ptrdiff_t>(rank));
        return _times[rank].count();
    }

    void print(Seconds seconds) {
        std::size_t bytes = 0;
        for (const Connection& connection : _connections)
            bytes += connection.end.bytes();
        std::printf(R"({"requests": %zu, "seconds": %.6f, "bytes": %zu, "median": %.9f, "p99": %.9f})"
                    "\n",
                    _times.size(), seconds.count(), bytes, percentile(0.5), percentile(0.99));
    }

    const Options& _options;
    std::vector<char> _buffer;
    int _epoll = -1;
    std::vector<Connection> _connections;
    std::size_t _underWay = 0; // requests that wait for the end of their reply
    std::vector<Seconds> _times;
};

Options read(char* const arguments[]) {
    Options options;
    options.port = static_cast<std::uint16_t>(std::atoi(arguments[1]));
    options.isHttp = std::strcmp(arguments[2], "http") == 0;
    options.lastByte = static_cast<char>(std::atoi(arguments[2]));
    options.connections = std::strtoul(arguments[3], nullptr, 10);
    options.readSize = std::strtoul(arguments[4], nullptr, 10);
    char* unit = nullptr;
    const double limit = std::strtod(arguments[5], &unit);
    if (*unit == 's')
        options.limit = Seconds(limit);
    else
        options.requestsEach = static_cast<std::size_t>(limit);
    options.expected = arguments[6];
    for (int c = std::getchar(); c != EOF; c = std::getchar())
        options.request.push_back(static_cast<char>(c));
    return options;
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 7) {
        std::fprintf(stderr, "Usage: %s PORT END CONNECTIONS READ LIMIT EXPECTED <REQUEST\n", argv[0]);
        return 2;
    }
    try {
        const Options options = read(argv);
        Client(options).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}
