#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Listens on the loopback. Connections are made, and what they send is kept, without anybody taking
/// them.
class ListeningSocket {
public:
    /// At an address of 127.0.0.0/8 or ::1, and a free port unless one is given.
    explicit ListeningSocket(const std::string& host = "127.0.0.1", int backlog = 8, std::uint16_t port = 0);
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int descriptor() const { return _descriptor; }
    std::uint16_t port() const { return _port; }

    /// How many bytes have come on the first connection, which is taken for this.
    int bytesThatWait();

    /// Takes all the places, so that a further connection is neither made nor refused.
    void fill();

    /// How many connections to it have been begun and are neither made nor refused, those of fill() left out.
    int halfMadeConnections() const;

private:
    const std::string _host;
    int _descriptor;
    std::uint16_t _port = 0;
    int _taken = -1;
    std::vector<int> _fillers;
    int _halfMadeByFill = 0;
};

/// Whether this machine has IPv6.
bool hasIpv6Loopback();
