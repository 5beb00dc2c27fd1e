#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// An answer as it came, taken apart.
struct RawAnswer {
    int status = 0;
    std::string version;
    /// By their names in small letters.
    std::map<std::string, std::string> headers;
    /// Without the chunks that it came in.
    std::string body;

    /// Empty where there is none.
    std::string header(const std::string& name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? "" : found->second;
    }
};

/// A client that sends what it is told and waits for answers. What does not come within the tests' patience, or ends
/// otherwise than expected, throws std::runtime_error.
class RawClient {
public:
    enum class Security : std::uint8_t { Plain, Tls };

    explicit RawClient(std::uint16_t port, Security security = Security::Plain,
                       const std::string& address = "127.0.0.1");
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    void send(std::string_view bytes);

    /// As much as the server takes without being waited for.
    std::size_t sendWhatGoes(std::string_view bytes);

    /// Whether bytes wait to be received.
    bool hasReceived() const;

    /// One answer, without a body where it is to HEAD; empty where the connection ends instead.
    RawAnswer receiveAnswer(bool isToHead = false);

    /// All up to the marker, with it.
    std::string receiveUntil(std::string_view marker);

    /// All until the server closes in order.
    std::string receiveAll();

    /// Sends nothing any more.
    void closeSending() const;

    /// Ends the connection.
    void close();

private:
    struct Tls;

    /// False at the end.
    bool receiveMore();
    std::string take(std::size_t count);
    std::string takeChunks();

    int _socket = -1;
    std::unique_ptr<Tls> _tls;
    std::string _received;
};

/// A connection for one request.
RawAnswer askOnce(std::uint16_t port, std::string_view request);
