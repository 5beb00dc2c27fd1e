#pragma once

#include "Services/CameraHubWeb/Hub/CameraConnections.h"
#include "Services/CameraHubWeb/Hub/HubLook.h"
#include "Services/CameraHubWeb/Hub/TurnQueue.h"

#include <functional>

namespace CameraHubWeb {

/// Takes the stills, one after the other. One thread at a time.
class StillTaking {
public:
    using StepListener = std::function<void(TakeStep)>;

    StillTaking(const HubSettings& settings, const CameraHub::Cancellation& cancellation, HubLook& look,
                StepListener step);

    /// Waits for the hub and the camera where these may come back, takes the still and fetches its picture. The request
    /// goes from the job into the result.
    TakeResult take(TakeJob& job);

    CameraConnections& connections() { return _connections; }

private:
    using Time = std::chrono::steady_clock::time_point;

    TakeResult takeWhenThere(TakeJob& job);
    CameraConnection* connectionOf(const std::string& uid, Time lastTry);
    TakenStill takeWith(CameraConnection& connection, CameraHub::Camera camera, TakeJob& job);
    void capture(CameraConnection& connection, const CameraHub::CaptureRequest& request, TakenStill& taken);
    void fetch(CameraConnection& connection, TakenStill& taken);

    HubLook& _look;
    const StepListener _step;
    const std::chrono::milliseconds _returnTime;
    CameraConnections _connections;
};

} // namespace CameraHubWeb
