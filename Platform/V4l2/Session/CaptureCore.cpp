#include "Platform/V4l2/Session/CaptureCore.h"

#include <utility>

namespace Platform::V4l2 {

using Phase = Shared::CaptureState::Phase;

std::string_view CaptureCore::deviceName() const {
    return _group ? std::string_view(_group->sources.front().node.devicePath) : "a camera";
}

void CaptureCore::initialise(CameraGroupHandle group) {
    std::lock_guard lock(_mutex);
    _state.requireNew("MediaCapture.InitializeAsync", deviceName());
    auto worker = std::make_shared<CameraWorker>(_surroundings.calls, _surroundings.pool, group->sources.front(),
                                                 _surroundings.limits);
    _workers.resize(group->sources.size());
    _workers.front() = std::move(worker);
    _group = std::move(group);
    _state.enter(Phase::Initialised);
}

void CaptureCore::close() {
    std::lock_guard lock(_mutex);
    _state.enter(Phase::Closed);
    for (const auto& worker : _workers)
        if (worker)
            worker->close();
}

void CaptureCore::madeReady(const std::optional<winrt::hresult_error>& error) {
    std::lock_guard lock(_mutex);
    _state.madeReady(error);
}

void CaptureCore::requireInitialised(std::string_view operation) {
    std::lock_guard lock(_mutex);
    _state.requireInitialised(operation, deviceName());
}

void CaptureCore::requireCamera(std::string_view operation) {
    worker(operation, 0)->call<void>(operation, [](CameraSession& session) { session.requirePresence(); });
}

CameraGroupHandle CaptureCore::group() {
    std::lock_guard lock(_mutex);
    return _state.is(Phase::Initialised) ? _group : nullptr;
}

std::shared_ptr<CameraWorker> CaptureCore::worker(std::string_view operation, std::size_t source) {
    std::lock_guard lock(_mutex);
    _state.requireInitialised(operation, deviceName());
    auto& worker = _workers.at(source);
    if (!worker)
        worker = std::make_shared<CameraWorker>(_surroundings.calls, _surroundings.pool, _group->sources.at(source),
                                                _surroundings.limits);
    return worker;
}

} // namespace Platform::V4l2
