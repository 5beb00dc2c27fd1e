#pragma once

#include "Platform/V4l2/Controls/NumberMenu.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <cstdint>
#include <string_view>

namespace Platform::V4l2 {

/// Runs work on a menu of the capture's camera: its result. Raises what the work raises, and if the camera is gone.
/// `id`: V4L2_CID_..., of a menu of numbers.
template <typename T, typename Work>
T callOnMenu(CaptureCore& core, std::string_view operation, std::uint32_t id, Work work) {
    return core.worker(operation, 0)->call<T>(operation, [id, work](CameraSession& session) -> T {
        session.requirePresence();
        NumberMenu menu(session.controls(), id);
        return work(menu, session.node());
    });
}

} // namespace Platform::V4l2
