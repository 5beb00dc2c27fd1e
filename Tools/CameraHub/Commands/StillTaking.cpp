#include "Tools/CameraHub/Commands/StillTaking.h"

#include "Tools/CameraHub/Picture/Histogram.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/Text/CameraChoice.h"
#include "Tools/Text/ExposureText.h"

#include <cstdlib>

namespace CommandLine {
namespace {

using std::chrono::microseconds;

CameraHub::Camera chosen(const Session& session, CameraHub::CameraHubClient& client, const std::string& wanted) {
    const Progress progress = session.waitFor("the list of cameras");
    return chooseCamera(client.discover(), wanted);
}

} // namespace

StillTaking::StillTaking(const Session& session, const std::string& wantedCamera, std::chrono::milliseconds settle)
    : _session(session), _client(session.connect()), _camera(chosen(session, _client, wantedCamera)), _settle(settle) {}

CameraHub::Still StillTaking::take(std::variant<microseconds, CameraHub::Percent> exposure) {
    CameraHub::CaptureRequest request;
    request.camera = _camera.uid;
    request.exposure = exposure;
    request.settle = _settle;
    try {
        CameraHub::Still still = [&] {
            const Progress progress =
                _session.waitFor((_hasTaken ? "the next still of " : "the first still of ") + cameraName(_camera));
            return _client.takeStill(request);
        }();
        _hasTaken = true;
        if (still.wasTakenTwice)
            _session.note("taken a second time, as another client's capture came in between");
        return still;
    } catch (const CameraHub::MethodFailed& error) {
        throw Failure(ExitCode::CaptureFailed, std::string("the camera failed: ") + error.what() +
                                                   "; try again, and if that does not help, plug it in anew");
    }
}

Json::Value stillAsJson(const CameraHub::Still& still, const std::string& file) {
    const RgbPicture picture = decodePng(still.png);
    const Histogram histogram(picture);
    Json::Value entry(Json::objectValue);
    entry["file"] = file;
    entry["exposureInUs"] =
        still.capture.exposure ? Json::Value(Json::Int64(still.capture.exposure->count())) : Json::Value();
    entry["width"] = picture.width;
    entry["height"] = picture.height;
    entry["tooBright"] = histogram.tooBright();
    entry["tooDark"] = histogram.tooDark();
    entry["wasTakenTwice"] = still.wasTakenTwice;
    return entry;
}

std::string exposureNote(std::optional<microseconds> asked, std::optional<microseconds> inForce) {
    if (!inForce)
        return "the exposure could not be set or read back; the still has the one that the camera had";
    if (!asked)
        return "exposure in force: " + exposureText(*inForce);
    // The hub tells whole microseconds of a power of two, cut off or rounded.
    if (std::abs((*asked - *inForce).count()) <= 1)
        return "";
    return "exposure in force: " + exposureText(*inForce) + ", asked for: " + exposureText(*asked);
}

} // namespace CommandLine
