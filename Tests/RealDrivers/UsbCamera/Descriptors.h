#pragma once

#include "Tests/RealDrivers/UsbCamera/ByteWriter.h"
#include "Tests/RealDrivers/UsbCamera/CameraModel.h"

#include <cstdint>

namespace UsbCamera {

/// The descriptor of that type and index; empty for one that the camera has not got.
Bytes descriptor(const CameraModel& model, std::uint8_t type, std::uint8_t index);

} // namespace UsbCamera
