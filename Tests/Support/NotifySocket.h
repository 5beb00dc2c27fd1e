#pragma once

#include "Tests/Support/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

/// Stands in for a service manager: this process is one of its services for as long as the object lives.
class NotifySocket {
public:
    /// `watchdogInUs`: as WATCHDOG_USEC has it, or none.
    explicit NotifySocket(const std::optional<std::string>& watchdogInUs = std::nullopt)
        : _watchdog("WATCHDOG_USEC", watchdogInUs) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~NotifySocket() { close(_socket); }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// What has been told since the last call.
    std::vector<std::string> received() const {
        std::vector<std::string> messages;
        std::array<char, 4096> text{};
        for (;;) {
            const ssize_t size = recv(_socket, text.data(), text.size(), MSG_DONTWAIT);
            if (size < 0)
                return messages;
            messages.emplace_back(text.data(), static_cast<std::size_t>(size));
        }
    }

private:
    std::filesystem::path path() const { return _folder.path() / "notify"; }

    const TemporaryFolder _folder;
    const int _socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const ScopedEnvironment _variable{"NOTIFY_SOCKET", path().string()};
    const ScopedEnvironment _watchdog;
    const ScopedEnvironment _process{"WATCHDOG_PID", std::nullopt};
};
