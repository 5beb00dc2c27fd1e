#pragma once

#include "Platform/Simulated/Session/CaptureCore.h"
#include "Platform/Simulated/World/JournaledCall.h"

#include <memory>
#include <utility>

// Calls on a camera: its faults strike, and the journal names its device. The camera may be null, as that
// of a capture that has not been initialised is.

namespace Platform::Simulated {

inline Faults faultsOf(const std::shared_ptr<SimulatedCamera>& camera) {
    return camera ? camera->definition()->faults : Faults();
}

inline JournalCall onDevice(JournalCall call, const std::shared_ptr<SimulatedCamera>& camera) {
    if (camera)
        call.device = camera->deviceId();
    return call;
}

template <typename Work> auto cameraCall(const std::shared_ptr<CaptureCore>& core,
                                         const std::shared_ptr<SimulatedCamera>& camera, JournalCall call, Work&& work)
    -> decltype(work()) {
    return callNow(core->simulation()->journal(), onDevice(std::move(call), camera), faultsOf(camera),
                   std::forward<Work>(work));
}

/// The work keeps alive what it needs.
template <typename T, typename Work> IAsyncOperation<T> cameraCallAsync(const std::shared_ptr<CaptureCore>& core,
                                                                        const std::shared_ptr<SimulatedCamera>& camera,
                                                                        JournalCall call, Work work) {
    const auto& simulation = core->simulation();
    const auto strand = camera ? camera->strand() : Shared::Strand::create(simulation->pool());
    return callAsync<T>(simulation, *strand, onDevice(std::move(call), camera), faultsOf(camera), std::move(work));
}

} // namespace Platform::Simulated
