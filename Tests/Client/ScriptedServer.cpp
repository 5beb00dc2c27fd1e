#include "Tests/Client/ScriptedServer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace {

/// False if the other side takes no more.
bool sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

} // namespace

ScriptedServer::ScriptedServer(std::string endOfRequest, const std::string& host)
    : _endOfRequest(std::move(endOfRequest)), _listener(host), _thread([this] { run(); }) {}

ScriptedServer::~ScriptedServer() {
    {
        const std::lock_guard lock(_mutex);
        _isToStop = true;
        shutdown(_listener.descriptor(), SHUT_RDWR);
        if (_connection >= 0)
            shutdown(_connection, SHUT_RDWR);
    }
    _changed.notify_all();
    _thread.join();
}

void ScriptedServer::answer(std::string bytes, Then then) {
    {
        const std::lock_guard lock(_mutex);
        _answers.push_back({std::move(bytes), then});
    }
    _changed.notify_all();
}

std::vector<std::string> ScriptedServer::requests() const {
    const std::lock_guard lock(_mutex);
    return _requests;
}

void ScriptedServer::run() {
    while (true) {
        const int connection = accept4(_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC);
        {
            const std::lock_guard lock(_mutex);
            if (_isToStop || connection < 0) {
                close(connection);
                return;
            }
            _connection = connection;
        }
        serve(connection);
        const std::lock_guard lock(_mutex);
        _connection = -1;
        close(connection);
    }
}

void ScriptedServer::serve(int connection) {
    Answer answer;
    while (readRequest(connection) && takeAnswer(answer)) {
        const bool isTaken = sendAll(connection, answer.bytes);
        if (!isTaken || answer.then == Then::End)
            return;
        if (answer.then == Then::Reset) {
            const linger discard{1, 0};
            setsockopt(connection, SOL_SOCKET, SO_LINGER, &discard, sizeof discard);
            return;
        }
        while (answer.then == Then::GoOnForever && sendAll(connection, " "))
            ;
    }
}

bool ScriptedServer::readRequest(int connection) {
    std::string request;
    std::array<char, 65536> part;
    while (!request.ends_with(_endOfRequest)) {
        const ssize_t received = recv(connection, part.data(), part.size(), 0);
        if (received <= 0)
            return false;
        request.append(part.data(), static_cast<std::size_t>(received));
    }
    const std::lock_guard lock(_mutex);
    _requests.push_back(std::move(request));
    return true;
}

bool ScriptedServer::takeAnswer(Answer& answer) {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return _isToStop || !_answers.empty(); });
    if (_answers.empty())
        return false;
    answer = std::move(_answers.front());
    _answers.pop_front();
    return true;
}
