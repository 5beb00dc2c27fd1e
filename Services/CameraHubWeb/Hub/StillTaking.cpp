#include "Services/CameraHubWeb/Hub/StillTaking.h"

#include "Services/CameraHubWeb/Hub/Connecting.h"

#include <utility>

namespace CameraHubWeb {
namespace {

using Clock = std::chrono::steady_clock;

std::chrono::microseconds since(Clock::time_point begun) {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begun);
}

} // namespace

StillTaking::StillTaking(const HubSettings& settings, const CameraHub::Cancellation& cancellation, HubLook& look,
                         StepListener step)
    : _look(look), _step(std::move(step)), _returnTime(settings.returnTime),
      _connections(settings.address, optionsOf(settings, cancellation), settings.idleTime) {}

TakeResult StillTaking::take(TakeJob& job) {
    const std::string uid = job.request.capture.camera;
    TakeResult result;
    try {
        result = takeWhenThere(job);
    } catch (...) {
        TakeFailure failure = currentFailure();
        if (failure.kind == TakeFailureKind::HubAway)
            _look.noteGone(failure.detail);
        result = std::move(failure);
    }
    _connections.release(uid);
    return result;
}

TakeResult StillTaking::takeWhenThere(TakeJob& job) {
    const std::string& uid = job.request.capture.camera;
    const Time lastTry = Clock::now() + _returnTime;
    while (true) {
        HubLook::Finding finding = _look.waitFor(uid);
        if (auto* const failure = std::get_if<TakeFailure>(&finding))
            return std::move(*failure);
        if (CameraConnection* const connection = connectionOf(uid, lastTry))
            return takeWith(*connection, std::get<CameraHub::Camera>(std::move(finding)), job);
    }
}

/// None if the hub has gone and may come back.
CameraConnection* StillTaking::connectionOf(const std::string& uid, Time lastTry) {
    std::string detail;
    try {
        return &_connections.get(uid, _look.generation());
    } catch (const CameraHub::ConnectionFailed& error) {
        if (Clock::now() >= lastTry)
            throw;
        detail = error.what();
    } catch (const CameraHub::ConnectionEnded& error) { // of one that was kept
        detail = error.what();
    }
    _connections.release(uid);
    _look.noteGone(detail);
    return nullptr;
}

TakenStill StillTaking::takeWith(CameraConnection& connection, CameraHub::Camera camera, TakeJob& job) {
    TakenStill taken;
    taken.camera = std::move(camera);
    taken.placeAtFirst = job.placeAtFirst;
    taken.queueTime = since(job.since);
    capture(connection, job.request.capture, taken);
    try {
        fetch(connection, taken);
    } catch (const CameraHub::ImageGone&) {
        taken.still.wasTakenTwice = true;
        capture(connection, job.request.capture, taken);
        fetch(connection, taken);
    }
    taken.request = std::move(job.request);
    return taken;
}

void StillTaking::capture(CameraConnection& connection, const CameraHub::CaptureRequest& request, TakenStill& taken) {
    _step(connection.holdsCamera ? TakeStep::Taking : TakeStep::Opening);
    connection.holdsCamera = false; // a capture that is refused lets go of it
    const Time begun = Clock::now();
    taken.still.capture = connection.client.capture(request);
    taken.captureTime += since(begun);
    taken.takenAt = std::chrono::system_clock::now();
    connection.holdsCamera = true;
}

void StillTaking::fetch(CameraConnection& connection, TakenStill& taken) {
    _step(TakeStep::Fetching);
    const Time begun = Clock::now();
    taken.still.png = connection.client.fetch(taken.still.capture.imageId);
    taken.fetchTime = since(begun);
}

} // namespace CameraHubWeb
