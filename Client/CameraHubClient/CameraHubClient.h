#pragma once

#include <CameraHubClient/Address.h>
#include <CameraHubClient/Camera.h>
#include <CameraHubClient/CaptureRequest.h>
#include <CameraHubClient/Errors.h>
#include <CameraHubClient/Export.h>
#include <CameraHubClient/Options.h>
#include <CameraHubClient/Still.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace CameraHub {

/// A connection to a Camera Hub. Calls block until the reply is there, the time of Options is over, or its cancellation
/// is cancelled; they throw what Errors.h names, and std::invalid_argument, before anything is sent, for arguments that
/// no hub should get.
///
/// The camera of the latest capture stays open in the hub for as long as the client lives and asks for no other one:
/// its next still comes without the two seconds in which a camera's automatic controls settle.
///
/// A message that was not answered completely costs the connection, since its reply could come later, and be taken for
/// that of another: the calls after it throw NotConnected. It is not made again behind the caller's back, because the
/// held camera and the redirection went with it: make a new client.
///
/// One thread at a time may use a client; any thread may cancel it. It raises no SIGPIPE and handles no signals.
class CAMERA_HUB_CLIENT_EXPORT CameraHubClient {
public:
    /// Connects. Throws ConnectionFailed, TimedOut or Cancelled; std::invalid_argument for an address or a time outside
    /// of what Address and Options tell.
    explicit CameraHubClient(const Address& address = {}, const Options& options = {});

    /// Ends the connection, and with it a redirection.
    ~CameraHubClient();

    /// One that was moved from can be assigned to or destroyed, nothing else.
    CameraHubClient(CameraHubClient&& other) noexcept;
    CameraHubClient& operator=(CameraHubClient&& other) noexcept;
    CameraHubClient(const CameraHubClient&) = delete;
    CameraHubClient& operator=(const CameraHubClient&) = delete;

    /// Whether no call has lost the connection yet. It does not ask the hub: one that has gone is noticed by a call.
    bool isConnected() const noexcept;

    /// The hub's version.
    std::string version();

    /// The cameras, in ascending order of their uids. One that was just plugged in comes half a second later at the
    /// earliest, and so do all of a hub that has just started.
    std::vector<Camera> discover();

    /// Takes a still, whose image the hub keeps until anybody takes the next one. Throws CaptureRefused where it cannot
    /// begin, MethodFailed where the camera fails, std::invalid_argument for values outside of what CaptureRequest
    /// tells. The time for it is that of Options and the settle time.
    Capture capture(const CaptureRequest& request);

    /// The PNG file of a still, on a connection of its own: what becomes of it does not touch that for messages. Throws
    /// ImageGone where the hub no longer has it, std::invalid_argument for what is no image id.
    std::vector<std::uint8_t> fetch(const std::string& imageId);

    /// capture() and fetch(), each with its own time. If the image is gone when it is fetched, as another client's
    /// capture has taken its place, this is done once more; throws ImageGone if that one is gone as well.
    Still takeStill(const CaptureRequest& request);

    /// Moves the hub's logs and crash records to a folder of its machine, for as long as this connection lives or until
    /// a client asks for another one; Docs/operating.md tells what the folder has to look like. Throws MethodFailed
    /// where the hub cannot, std::invalid_argument for a path that is not UTF-8, has a NUL in it or lacks the word
    /// "Diagnostics": such a one would cost the hub its logging.properties.
    void redirectDiagnostics(const std::string& path);

private:
    class Implementation;
    std::unique_ptr<Implementation> _implementation;
};

} // namespace CameraHub
