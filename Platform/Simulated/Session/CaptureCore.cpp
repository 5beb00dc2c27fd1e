#include "Platform/Simulated/Session/CaptureCore.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace Platform::Simulated {

using Phase = Shared::CaptureState::Phase;

namespace {

std::string nameOf(const std::shared_ptr<SimulatedCamera>& camera) {
    return camera ? Halden::toUtf8(camera->deviceId()) : "a new capture";
}

const SourceDefinition* firstWithFormats(const GroupDefinition& group, const std::vector<MediaStreamType>& types) {
    for (const MediaStreamType type : types)
        for (const SourceDefinition& source : group.sources)
            if (source.streamType == type && !source.formats.empty())
                return &source;
    return nullptr;
}

} // namespace

std::shared_ptr<SimulatedCamera> firstCamera(Simulation& simulation, const GroupDefinition& group) {
    const auto isColourVideo = [](const SourceDefinition& source) {
        return source.kind == MediaFrameSourceKind::Color && source.streamType != MediaStreamType::Audio;
    };
    auto source = std::find_if(group.sources.begin(), group.sources.end(), isColourVideo);
    if (source == group.sources.end())
        source = group.sources.begin();
    return source == group.sources.end() ? nullptr : simulation.camera(source->device.id);
}

void CaptureCore::open(std::shared_ptr<const GroupDefinition> group, PhotoCaptureSource photoSource) {
    constexpr const char* operation = "MediaCapture.InitializeAsync";
    const auto camera = firstCamera(*_simulation, *group);
    if (!camera || !camera->isPlugged())
        throw Shared::errnoError(operation, camera ? nameOf(camera) : Halden::toUtf8(group->id), ENODEV);
    std::lock_guard lock(_mutex);
    _state.requireNew(operation, nameOf(camera));
    _state.enter(Phase::Initialised);
    _group = std::move(group);
    _photoSource = photoSource;
    _camera = camera;
}

void CaptureCore::close() {
    std::lock_guard lock(_mutex);
    _state.enter(Phase::Closed);
    _runningReaders = 0;
}

bool CaptureCore::isClosed() const {
    std::lock_guard lock(_mutex);
    return _state.is(Phase::Closed);
}

void CaptureCore::madeReady(const std::optional<winrt::hresult_error>& error) {
    std::lock_guard lock(_mutex);
    _state.madeReady(error);
}

std::shared_ptr<SimulatedCamera> CaptureCore::camera() const {
    std::lock_guard lock(_mutex);
    return _camera;
}

std::shared_ptr<const GroupDefinition> CaptureCore::group() const {
    const auto scenario = _simulation->scenario();
    std::lock_guard lock(_mutex);
    for (const GroupDefinition& group : scenario->groups)
        if (group.id == _group->id)
            return partOf(scenario, group);
    return _group;
}

void CaptureCore::requireInitialised(const char* operation) const {
    std::lock_guard lock(_mutex);
    _state.requireInitialised(operation, nameOf(_camera));
}

void CaptureCore::requireOpen(const char* operation, const std::shared_ptr<SimulatedCamera>& camera) const {
    requireInitialised(operation);
    if (!camera || !camera->isPlugged()) // none where the call began before the capture had been initialised
        throw Shared::errnoError(operation, nameOf(camera), ENODEV);
}

void CaptureCore::setFormat(const std::shared_ptr<SimulatedCamera>& camera, const MediaFrameFormat& format) {
    std::lock_guard lock(_mutex);
    _camera = camera;
    _format = FormatDefinition{format.Width, format.Height, format.FrameRate, format.Subtype};
}

std::optional<FormatDefinition> CaptureCore::stillFormat() const {
    const auto definition = group();
    std::lock_guard lock(_mutex);
    if (_format)
        return _format;
    using enum MediaStreamType;
    const SourceDefinition* source = firstWithFormats(*definition, _photoSource == PhotoCaptureSource::VideoPreview
                                                                       ? std::vector{VideoPreview, VideoRecord, Photo}
                                                                       : std::vector{Photo, VideoPreview, VideoRecord});
    if (source == nullptr)
        return std::nullopt;
    return source->formats.front();
}

void CaptureCore::readerStarted() {
    std::lock_guard lock(_mutex);
    ++_runningReaders;
}

void CaptureCore::readerStopped() {
    std::lock_guard lock(_mutex);
    if (_runningReaders > 0) // closing stops all readers at once
        --_runningReaders;
}

bool CaptureCore::isStreaming() const {
    std::lock_guard lock(_mutex);
    return _runningReaders > 0;
}

} // namespace Platform::Simulated
