#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <cstdint>
#include <string>

/// What a client learns of a camera. All text is UTF-8.
struct CameraDescription {
    std::string name; // the platform's display name; stays inside the hub
    std::string make; // empty where none was found, as is the model
    std::string model;
    std::int32_t resolutionX = 0;          // pixels
    std::int32_t resolutionY = 0;          // pixels
    std::int32_t exposureMinValueInUs = 0; // the shortest exposure
    std::int32_t exposureMaxValueInUs = 0; // the longest exposure
    std::string uid;                       // the platform's device id, byte for byte
};

/// One usable camera source: what it takes to describe it and to open it again. A value; copies share
/// the platform's handle.
struct FoundCamera {
    Platform::DeviceInformation deviceInformation;

    /// Position in the source's list of video profiles; used as it is in the list of supported formats.
    std::int32_t profileIndex = 0;

    CameraDescription description;
};
