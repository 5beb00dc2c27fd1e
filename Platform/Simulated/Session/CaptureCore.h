#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Platform/Shared/CaptureState.h"
#include "Platform/Simulated/World/Simulation.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace Platform::Simulated {

/// What a capture shares with its sources, readers and controls: its state, camera and format. Any thread.
///
/// The camera of a capture, whose controls and stills it has, is that of the source whose format was set
/// last; before that, of the group's first colour video source, or else of its first source.
class CaptureCore {
public:
    explicit CaptureCore(std::shared_ptr<Simulation> simulation) : _simulation(std::move(simulation)) {}

    const std::shared_ptr<Simulation>& simulation() const { return _simulation; }

    /// From new to initialised. Raises in another state, and if the device has gone.
    void open(std::shared_ptr<const GroupDefinition> group, PhotoCaptureSource photoSource);
    /// From any state to closed.
    void close();
    bool isClosed() const;
    /// See CaptureState.
    void madeReady(const std::optional<winrt::hresult_error>& error);

    /// The camera; null before the capture has been initialised.
    std::shared_ptr<SimulatedCamera> camera() const;

    /// The group as the scenario in force has it, or as it was last if it has gone.
    std::shared_ptr<const GroupDefinition> group() const;

    /// Raises unless the capture is initialised and the camera there; it may be null. `operation` starts the text.
    void requireOpen(const char* operation, const std::shared_ptr<SimulatedCamera>& camera) const;
    /// As above without regard to whether the camera is there.
    void requireInitialised(const char* operation) const;

    void setFormat(const std::shared_ptr<SimulatedCamera>& camera, const MediaFrameFormat& format);
    /// The size of stills; none if no source has a format.
    std::optional<FormatDefinition> stillFormat() const;

    void readerStarted();
    void readerStopped();
    bool isStreaming() const;

private:
    const std::shared_ptr<Simulation> _simulation;
    mutable std::mutex _mutex; // guards all below
    Shared::CaptureState _state;
    std::shared_ptr<const GroupDefinition> _group;
    PhotoCaptureSource _photoSource = PhotoCaptureSource::Auto;
    std::shared_ptr<SimulatedCamera> _camera;
    std::optional<FormatDefinition> _format;
    std::size_t _runningReaders = 0;
};

/// The camera of a group as long as no format has been set; null for a group without sources.
std::shared_ptr<SimulatedCamera> firstCamera(Simulation& simulation, const GroupDefinition& group);

} // namespace Platform::Simulated
