#include "Tests/Services/CameraHubWeb/Hub/StandInHub.h"

#include "Tests/Client/FakeHub.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <json/reader.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

namespace CameraHubWeb {
namespace {

int boundSocket() {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        ADD_FAILURE() << "no port for a hub";
    const int yes = 1; // for those who listen there
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    return descriptor;
}

std::uint16_t portOf(int descriptor) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

/// What comes up to the end; nothing when the other side has gone.
std::string receive(int connection, std::string_view end) {
    std::string bytes;
    std::array<char, 4096> part;
    while (!bytes.ends_with(end)) {
        const ssize_t received = recv(connection, part.data(), part.size(), 0);
        if (received <= 0)
            return "";
        bytes.append(part.data(), static_cast<std::size_t>(received));
    }
    return bytes;
}

void sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string idOf(int still) {
    std::array<char, 40> text;
    std::snprintf(text.data(), text.size(), "00000000-0000-4000-8000-%012d", still);
    return text.data();
}

Json::Value parsed(const std::string& message) {
    Json::Value value;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    reader->parse(message.data(), message.data() + message.size() - 1, &value, nullptr);
    return value;
}

} // namespace

StandInHub::StandInHub(std::set<std::string> uids)
    : _messagePortKeeper(boundSocket()), _imagePortKeeper(boundSocket()), _messagePort(portOf(_messagePortKeeper)),
      _imagePort(portOf(_imagePortKeeper)), _uids(std::move(uids)) {
    start();
}

StandInHub::~StandInHub() {
    stop();
    close(_messagePortKeeper);
    close(_imagePortKeeper);
}

CameraHub::Address StandInHub::address() const { return {"127.0.0.1", _messagePort, _imagePort}; }

void StandInHub::start() {
    join();
    _isStopped = false;
    _isBusy = false;
    _hasCaptureUnderWay = false;
    _messages = std::make_unique<ListeningSocket>("127.0.0.1", 64, _messagePort);
    _images = std::make_unique<ListeningSocket>("127.0.0.1", 64, _imagePort);
    _acceptors.emplace_back([this, &listener = *_messages] { accept(listener, true); });
    _acceptors.emplace_back([this, &listener = *_images] { accept(listener, false); });
}

void StandInHub::stop() {
    endAll();
    join();
}

void StandInHub::endAll() {
    const std::lock_guard lock(_mutex);
    _isStopped = true;
    for (const auto& listener : {_messages.get(), _images.get()})
        if (listener != nullptr)
            shutdown(listener->descriptor(), SHUT_RDWR);
    for (const auto& connections : {_messageConnections, _imageConnections})
        for (const int connection : connections)
            shutdown(connection, SHUT_RDWR);
    _changed.notify_all();
}

/// After endAll().
void StandInHub::join() {
    for (std::thread& acceptor : _acceptors)
        acceptor.join();
    _acceptors.clear();
    for (std::thread& server : _servers) // nobody adds one any more
        server.join();
    _servers.clear();
    const std::lock_guard lock(_mutex);
    _messages.reset();
    _images.reset();
}

void StandInHub::accept(const ListeningSocket& listener, bool isForMessages) {
    while (true) {
        const int connection = accept4(listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(_mutex);
        if (_isStopped || connection < 0) {
            close(connection);
            return;
        }
        (isForMessages ? _messageConnections : _imageConnections).insert(connection);
        _connectionsEver += isForMessages ? 1 : 0;
        _servers.emplace_back([this, connection, isForMessages] { serve(connection, isForMessages); });
    }
}

void StandInHub::serve(int connection, bool isForMessages) {
    const std::string_view end = isForMessages ? std::string_view("\0", 1) : std::string_view("\r\n\r\n");
    for (std::string request = receive(connection, end); !request.empty(); request = receive(connection, end)) {
        Lock lock(_mutex);
        std::string reply = isForMessages ? answer(request, lock) : answerImage(request);
        lock.unlock();
        sendAll(connection, reply);
    }
    const std::lock_guard lock(_mutex);
    (isForMessages ? _messageConnections : _imageConnections).erase(connection);
    close(connection);
    _changed.notify_all();
}

std::string StandInHub::answer(const std::string& message, Lock& lock) {
    const Json::Value request = parsed(message);
    const int id = request["id"].asInt();
    const std::string method = request["method"].asString();
    const std::string uid = request["params"]["to"].asString();
    if (method == "camera:capture") {
        _journal.push_back("capture " + uid);
        _hadTwoCaptures = _hadTwoCaptures || _hasCaptureUnderWay;
        _hasCaptureUnderWay = true;
    }
    _changed.wait(lock, [this] { return _isStopped || !_isBusy; });
    if (_isStopped)
        return "";
    if (method == "camera:capture")
        return answerCapture(id, uid, lock);
    return method == "camera:discover" ? answerDiscovery(id) : FakeHub::result("\"2.9\"", id);
}

std::string StandInHub::answerCapture(int id, const std::string& uid, Lock& lock) {
    _isBusy = true;
    _changed.wait(lock, [this] { return _isStopped || !_holdsCaptures || _capturesAllowed > 0; });
    if (_isStopped)
        return "";
    --_capturesAllowed;
    Capture capture = _uids.contains(uid) ? Capture::Taken : Capture::NotConnected;
    if (!_nextCaptures.empty()) {
        capture = _nextCaptures.front();
        _nextCaptures.pop_front();
    }
    if (capture == Capture::Unanswered)
        _changed.wait(lock, [this] { return _isStopped; });
    if (capture == Capture::EndsHub) {
        lock.unlock();
        endAll();
        lock.lock();
    }
    if (_isStopped)
        return "";
    _isBusy = false;
    _changed.notify_all();
    _hasCaptureUnderWay = capture == Capture::Taken;
    return replyTo(capture, id);
}

std::string StandInHub::replyTo(Capture capture, int id) {
    switch (capture) {
    case Capture::Failed:
        return FakeHub::reply(R"({"id":)" + std::to_string(id) +
                              R"(,"jsonrpc":"2.0","error":{"message":"captureImage failed: it burns"}})");
    case Capture::NotConnected:
        return FakeHub::result(R"({"code":2,"message":"Camera Disconnected"})", id);
    case Capture::WithoutImage:
        return FakeHub::result(R"({"code":3,"message":"Unknown capture error"})", id);
    case Capture::Garbage:
        return FakeHub::reply("<html>");
    case Capture::Rejected:
        return FakeHub::reply(R"({"code":-32700,"jsonrpc":"2.0","message":"Parse Error"})");
    default:
        _imageId = idOf(++_stills);
        return FakeHub::captured(_imageId, id);
    }
}

std::string StandInHub::answerDiscovery(int id) {
    ++_discoveries;
    std::string list;
    for (const std::string& uid : _uids)
        list += (list.empty() ? "" : ",") +
                (R"({"exposureMaxValueInUs":1000000,"exposureMinValueInUs":122,"make":"Halden","model":"C1",)"
                 R"("resolutionX":640,"resolutionY":480,"uid":")" +
                 uid + "\"}");
    return FakeHub::result("[" + list + "]", id);
}

std::string StandInHub::answerImage(const std::string& request) {
    _journal.emplace_back("fetch");
    _hasCaptureUnderWay = false;
    if (_imagesToLose > 0) {
        --_imagesToLose;
        return FakeHub::noImage();
    }
    if (_imageId.empty() || request.find("/res/" + _imageId + " ") == std::string::npos)
        return FakeHub::noImage();
    const std::vector<std::uint8_t> png = picture(_stills);
    return FakeHub::image(std::string(png.begin(), png.end()));
}

void StandInHub::setCameras(std::set<std::string> uids) {
    const std::lock_guard lock(_mutex);
    _uids = std::move(uids);
}

void StandInHub::nextCaptures(const std::vector<Capture>& captures) {
    const std::lock_guard lock(_mutex);
    _nextCaptures.assign(captures.begin(), captures.end());
}

void StandInHub::loseImages(int count) {
    const std::lock_guard lock(_mutex);
    _imagesToLose = count;
}

void StandInHub::holdCaptures() {
    const std::lock_guard lock(_mutex);
    _holdsCaptures = true;
    _capturesAllowed = 0;
}

void StandInHub::allowCaptures(int count) {
    const std::lock_guard lock(_mutex);
    _capturesAllowed += count;
    _changed.notify_all();
}

std::vector<std::string> StandInHub::journal() const {
    const std::lock_guard lock(_mutex);
    return _journal;
}

bool StandInHub::hadTwoCapturesAtOnce() const {
    const std::lock_guard lock(_mutex);
    return _hadTwoCaptures;
}

int StandInHub::discoveries() const {
    const std::lock_guard lock(_mutex);
    return _discoveries;
}

int StandInHub::connections() const {
    const std::lock_guard lock(_mutex);
    return static_cast<int>(_messageConnections.size());
}

int StandInHub::connectionsEver() const {
    const std::lock_guard lock(_mutex);
    return _connectionsEver;
}

std::vector<std::uint8_t> StandInHub::picture(int number) {
    const std::string text = std::string(FakeHub::png) + std::to_string(number);
    return {text.begin(), text.end()};
}

} // namespace CameraHubWeb
