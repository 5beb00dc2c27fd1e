#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <cstdint>
#include <string>

/// A camera of the last listing, or one that was typed in by its id and kind.
struct DriverCamera {
    Platform::DeviceInformation deviceInformation; ///< null for a camera that was typed in
    std::u16string name;
    std::u16string make;
    std::u16string model;
    std::int32_t width = 0;  // pixels
    std::int32_t height = 0; // pixels
    std::u16string id;
    std::int32_t kind = 0; ///< a DeviceInformationKind, or whatever number was typed in
    std::int32_t profileIndex = -1;
};
