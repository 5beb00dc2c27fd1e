#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace Platform::V4l2 {

/// Which of the kernel's controls stand for one setting of the interface.
struct ControlMapping {
    std::vector<std::uint32_t> valueIds;  // the first that a camera has is its value
    std::vector<std::uint32_t> autoIds;   // the first that a camera has is its automatic; may be empty
    std::vector<std::int32_t> onValues;   // of the automatic, the preferred one first
    std::vector<std::int32_t> offValues;  // likewise
    bool isExposure = false;              // log2 of seconds instead of the kernel's own unit
    std::chrono::milliseconds movement{}; // how long the camera's mechanics take to follow
};

/// Exposure, Focus, WhiteBalance, Brightness, Contrast of the older generation.
const ControlMapping& exposureMapping();
const ControlMapping& focusMapping();
const ControlMapping& whiteBalanceMapping();
const ControlMapping& brightnessMapping();
const ControlMapping& contrastMapping();

} // namespace Platform::V4l2
