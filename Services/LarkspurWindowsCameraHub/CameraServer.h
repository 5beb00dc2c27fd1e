#pragma once

#include "Framework/CXX/Network/SharedBytes.h"
#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"
#include "Services/LarkspurWindowsCameraHub/FoundCamera.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The one object through which requests reach cameras: it finds them, opens them, takes stills and keeps
/// the latest image. Main thread. A capture blocks it to its end.
class CameraServer {
public:
    struct CaptureResult {
        std::string imageId;                   // 36 characters; empty: there is no image
        std::chrono::microseconds exposure{0}; // as the camera reports it, or exposureUnset
    };

    CameraServer();
    ~CameraServer();

    /// The cameras known at this moment, ascending by uid.
    std::vector<CameraDescription> discover() const;

    /// A text about the cameras, kept for all who ask, and made anew by `write` when they have changed: it tells of
    /// them alone, and always the same. Raises what that raises.
    std::shared_ptr<const std::string> textOfCameras(const std::function<std::string()>& write);

    /// The camera of that uid, opened and converged if nobody has it open, which takes more than 2 s; null
    /// if no such camera is known. The camera stays open for as long as somebody holds it. Raises the
    /// platform's errors.
    std::shared_ptr<ConnectedCamera> getCamera(std::string uid);

    /// Sets the exposure, takes a still and stores it in place of the one before. An exposure in
    /// microseconds beats one in per cent. `exposureInPercent` only says, by being a whole number other
    /// than 0, that the exposure is in per cent: the amount is `gainInPercent`. Without either it is
    /// 50000 us. Throws winrtExceptionWrapper for a platform failure; a null camera gives an empty result.
    CaptureResult captureImage(std::shared_ptr<ConnectedCamera> camera, int exposureInUs, double exposureInPercent,
                               int gainInPercent, int exposureChangeDelayInMs);

    /// A copy of the stored image's bytes; empty if that is not its id.
    std::vector<unsigned char> getImage(std::string id) const;

    /// The stored image itself, which stays for as long as somebody holds it; null if that is not its id.
    SharedBytes shareImage(const std::string& id) const;

    /// Moves the process's diagnostics to a folder, on behalf of a client, until that client goes or another
    /// one takes over. UTF-8. Throws RedirectDiagnosticsFailed when the ordinary diagnostics are back.
    void redirectDiagnostics(int client, const std::string& path);

    /// Brings the ordinary diagnostics back if it is this client whose redirection is in force.
    void cancelRedirectDiagnostics(int client);

private:
    class impl;
    std::unique_ptr<impl> pimpl;
};
