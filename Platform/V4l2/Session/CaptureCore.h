#pragma once

#include "Platform/Shared/CaptureState.h"
#include "Platform/V4l2/Session/CameraWorker.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

/// What the platform hands to each capture.
struct CaptureSurroundings {
    std::shared_ptr<SystemCalls> calls;
    std::shared_ptr<Shared::WorkerPool> pool;
    CameraLimits limits;
};

/// What a capture shares with its sources, readers and controls: its state and its cameras. Each source has a worker
/// from its first use on. Any thread.
class CaptureCore {
public:
    explicit CaptureCore(CaptureSurroundings surroundings) : _surroundings(std::move(surroundings)) {}
    ~CaptureCore() { close(); }
    CaptureCore(const CaptureCore&) = delete;
    CaptureCore& operator=(const CaptureCore&) = delete;

    /// Opens the group's first source. Raises if that fails, and unless the capture is new.
    void initialise(CameraGroupHandle group);
    void close();
    /// See CaptureState.
    void madeReady(const std::optional<winrt::hresult_error>& error);

    /// Raises unless the capture is initialised.
    void requireInitialised(std::string_view operation);
    /// Raises also if the camera is gone.
    void requireCamera(std::string_view operation);

    /// Null unless the capture is initialised.
    CameraGroupHandle group();

    /// Opens the source if it is not open yet. Raises if that fails, and unless the capture is initialised.
    std::shared_ptr<CameraWorker> worker(std::string_view operation, std::size_t source);

    const std::shared_ptr<Shared::WorkerPool>& pool() const { return _surroundings.pool; }

private:
    std::string_view deviceName() const;

    const CaptureSurroundings _surroundings;
    std::mutex _mutex; // guards all below
    Shared::CaptureState _state;
    CameraGroupHandle _group;
    std::vector<std::shared_ptr<CameraWorker>> _workers; // by source; null: not open
};

} // namespace Platform::V4l2
