#include "Client/FetchImage.h"
#include "Client/MessageConnection.h"
#include "Client/Protocol/Replies.h"
#include "Client/Protocol/Requests.h"

#include <CameraHubClient/CameraHubClient.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace CameraHub {

namespace {

/// All that names and addresses have in them, and nothing that could break out of a header.
bool isOfHost(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') ||
           std::string_view(".-_:%").find(character) != std::string_view::npos;
}

Address checked(Address address) {
    if (address.host.empty() || !std::all_of(address.host.begin(), address.host.end(), isOfHost))
        throw std::invalid_argument("a host is a name or an address, without brackets");
    if (address.messagePort == 0 || address.imagePort == 0)
        throw std::invalid_argument("a port is from 1 to 65535");
    return address;
}

Options checked(Options options) {
    for (const auto time : {options.connectTimeout, options.callTimeout})
        if (time < std::chrono::milliseconds(1) || time > std::chrono::hours(24))
            throw std::invalid_argument("a time to wait is at least 1 ms and at most 24 hours");
    return options;
}

} // namespace

class CameraHubClient::Implementation {
public:
    Implementation(const Address& address, const Options& options)
        : _address(checked(address)), _options(checked(options)),
          _messages(
              Connection(address.host, address.messagePort, Deadline(options.connectTimeout, options.cancellation))) {}

    bool isConnected() const { return _messages.has_value(); }

    /// Sends a request, and reads its result with the function. All but a refusal costs the connection.
    template <typename Read>
    auto call(const char* method, const Json::Value& parameters, std::chrono::milliseconds besides, Read read) {
        throwIfCancelled(_options.cancellation);
        if (!_messages)
            throw NotConnected("an earlier request has lost the connection to the hub");
        const std::string request = message(++_lastId, method, parameters);
        try {
            const Deadline deadline(_options.callTimeout + besides, _options.cancellation);
            return read(resultOf(_messages->exchange(request, deadline), _lastId));
        } catch (const Refusal&) {
            throw;
        } catch (...) {
            _messages.reset();
            throw;
        }
    }

    std::vector<std::uint8_t> fetch(const std::string& imageId) const {
        return fetchImage(imageId, _address, _options);
    }

private:
    Address _address;
    Options _options;
    std::int64_t _lastId = 0;
    std::optional<MessageConnection> _messages;
};

CameraHubClient::CameraHubClient(const Address& address, const Options& options)
    : _implementation(std::make_unique<Implementation>(address, options)) {}

CameraHubClient::~CameraHubClient() = default;
CameraHubClient::CameraHubClient(CameraHubClient&& other) noexcept = default;
CameraHubClient& CameraHubClient::operator=(CameraHubClient&& other) noexcept = default;

bool CameraHubClient::isConnected() const noexcept { return _implementation->isConnected(); }

std::string CameraHubClient::version() {
    return _implementation->call("camera:version", Json::objectValue, {}, versionFrom);
}

std::vector<Camera> CameraHubClient::discover() {
    return _implementation->call("camera:discover", Json::objectValue, {}, camerasFrom);
}

Capture CameraHubClient::capture(const CaptureRequest& request) {
    return _implementation->call("camera:capture", captureParameters(request), request.settle, captureFrom);
}

std::vector<std::uint8_t> CameraHubClient::fetch(const std::string& imageId) { return _implementation->fetch(imageId); }

Still CameraHubClient::takeStill(const CaptureRequest& request) {
    const Capture first = capture(request);
    try {
        return {first, fetch(first.imageId), false};
    } catch (const ImageGone&) {
        const Capture second = capture(request);
        return {second, fetch(second.imageId), true};
    }
}

void CameraHubClient::redirectDiagnostics(const std::string& path) {
    _implementation->call("camera:redirectDiagnostics", redirectionParameters(path), {}, checkRedirection);
}

} // namespace CameraHub
