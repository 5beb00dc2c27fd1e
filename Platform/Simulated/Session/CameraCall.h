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

/// The work keeps alive what it needs; so does `manner`, as of callAsync.
template <typename T, typename Work, typename Manner = Plainly>
IAsyncOperation<T> cameraCallAsync(const std::shared_ptr<CaptureCore>& core,
                                   const std::shared_ptr<SimulatedCamera>& camera, JournalCall call, Work work,
                                   Manner manner = {}) {
    const auto& simulation = core->simulation();
    const auto strand = camera ? camera->strand() : Shared::Strand::create(simulation->pool());
    return callAsync<T>(simulation, *strand, onDevice(std::move(call), camera), faultsOf(camera), std::move(work),
                        manner);
}

/// A call that makes the capture's camera ready, or leaves the reason why it is not.
template <typename Work>
IAsyncAction readyingCallAsync(const std::shared_ptr<CaptureCore>& core, const std::shared_ptr<SimulatedCamera>& camera,
                               JournalCall call, Work work) {
    return cameraCallAsync<void>(core, camera, std::move(call), std::move(work),
                                 [core](const auto& operation) { Shared::makeReady(*core, operation); });
}

} // namespace Platform::Simulated
