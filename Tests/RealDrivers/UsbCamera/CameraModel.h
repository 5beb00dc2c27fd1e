#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace UsbCamera {

enum class Format { Yuyv, Mjpeg };

struct Size {
    unsigned width;
    unsigned height;
};

/// What the camera is; fixed from its start.
struct CameraModel {
    // Empty: has none.
    std::string maker = "Example Optics";
    std::string product = "Test Camera";
    std::string serial;
    std::vector<Format> formats{Format::Yuyv, Format::Mjpeg};
    std::vector<Size> sizes{{640, 480}};
    unsigned rate = 30;            // frames a second, unless the exposure takes longer
    unsigned latency = 4;          // frames that still show the old state, behind the one that is on its way
    std::uint32_t exposureMin = 3; // 100 us, as all exposures
    std::uint32_t exposureMax = 2047;

    std::uint32_t interval() const { return 10'000'000 / rate; } // 100 ns
};

/// Of the camera's interfaces, units and endpoints.
namespace Number {
constexpr std::uint8_t controlInterface = 0;
constexpr std::uint8_t streamingInterface = 1;
constexpr std::uint8_t cameraTerminal = 1;
constexpr std::uint8_t processingUnit = 2;
constexpr std::uint8_t outputTerminal = 3;
constexpr std::uint8_t frameEndpoint = 1;
} // namespace Number

} // namespace UsbCamera
