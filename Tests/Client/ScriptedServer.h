#pragma once

#include "Tests/Client/ListeningSocket.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Serves one connection after the other on the loopback: reads a request up to its end, and sends what the test has
/// put up for it, or waits until it does.
class ScriptedServer {
public:
    enum class Then {
        WaitForNext,
        /// The connection ends in order, all having been read.
        End,
        /// It is broken off.
        Reset,
        /// Blanks follow, for as long as the other side takes them.
        GoOnForever
    };

    explicit ScriptedServer(std::string endOfRequest, const std::string& host = "127.0.0.1");
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t port() const { return _listener.port(); }

    /// The answer to the first request that has none yet, on whichever connection.
    void answer(std::string bytes, Then then = Then::WaitForNext);

    /// All so far, each with its end.
    std::vector<std::string> requests() const;

private:
    struct Answer {
        std::string bytes;
        Then then;
    };

    void run();
    void serve(int connection);
    bool readRequest(int connection);
    bool takeAnswer(Answer& answer);

    const std::string _endOfRequest;
    ListeningSocket _listener;
    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<Answer> _answers;
    std::vector<std::string> _requests;
    int _connection = -1;
    bool _isToStop = false;
    std::thread _thread;
};
