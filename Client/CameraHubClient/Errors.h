#pragma once

#include <CameraHubClient/Export.h>

#include <stdexcept>
#include <string>

namespace CameraHub {

/// What a client throws because of the hub or the way to it; what() is one line for people. Each kind that follows
/// is a class of its own. An argument that is refused before anything was sent is a std::invalid_argument instead.
class CAMERA_HUB_CLIENT_EXPORT Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The way to the hub. After each of these, where a message was under way, its client has no connection any more.

/// There is no hub at the address: the name is unknown, or the connection is refused or impossible.
class CAMERA_HUB_CLIENT_EXPORT ConnectionFailed : public Error {
public:
    using Error::Error;
};

/// The hub ended the connection without a (complete) reply. Some requests and some failures of a camera end the hub.
class CAMERA_HUB_CLIENT_EXPORT ConnectionEnded : public Error {
public:
    using Error::Error;
};

/// The time of Options is over. What was asked for may still happen.
class CAMERA_HUB_CLIENT_EXPORT TimedOut : public Error {
public:
    using Error::Error;
};

/// Options::cancellation was cancelled. What was asked for may still happen: a capture does.
class CAMERA_HUB_CLIENT_EXPORT Cancelled : public Error {
public:
    using Error::Error;
};

/// What came is no reply of a hub: another program listens there, or another version of the hub.
class CAMERA_HUB_CLIENT_EXPORT ProtocolError : public Error {
public:
    using Error::Error;
};

/// An earlier call has lost the connection. Make a new client.
class CAMERA_HUB_CLIENT_EXPORT NotConnected : public Error {
public:
    using Error::Error;
};

/// What the hub answers in place of what it was asked for, in the kinds that follow. The client remains usable.
class CAMERA_HUB_CLIENT_EXPORT Refusal : public Error {
public:
    using Error::Error;
};

/// The hub did not understand the message: the reply with code and message at its top. It says nothing of the request:
/// something between client and hub has altered it.
class CAMERA_HUB_CLIENT_EXPORT MessageRejected : public Refusal {
public:
    MessageRejected(int code, const std::string& message) : Refusal(message), _code(code) {}

    /// -32700, as a rule.
    int code() const noexcept { return _code; }

private:
    int _code;
};

/// The camera failed during the capture, the redirection failed, or the hub does not know the method: the reply with an
/// error, whose message what() is, with blanks for line ends.
class CAMERA_HUB_CLIENT_EXPORT MethodFailed : public Refusal {
public:
    using Refusal::Refusal;
};

/// The capture could not be begun: the reply with code and message in its result, whose message what() is, with blanks
/// for line ends.
class CAMERA_HUB_CLIENT_EXPORT CaptureRefused : public Refusal {
public:
    static constexpr int noCameraNamed = 1;
    static constexpr int cameraNotConnected = 2;
    static constexpr int noImage = 3;

    CaptureRefused(int code, const std::string& message) : Refusal(message), _code(code) {}

    /// One of the above.
    int code() const noexcept { return _code; }

private:
    int _code;
};

/// The hub does not have the image: another capture, of any client, has taken its place, or the camera ended the still
/// with an error.
class CAMERA_HUB_CLIENT_EXPORT ImageGone : public Refusal {
public:
    using Refusal::Refusal;
};

} // namespace CameraHub
