#pragma once

#include "Tests/RealDrivers/UsbCamera/ByteWriter.h"
#include "Tests/RealDrivers/UsbCamera/CameraModel.h"
#include "Tests/RealDrivers/UsbCamera/Sensor.h"

namespace UsbCamera {

/// A frame as it goes over the wire. From the top, in rows of blocks 16 pixels wide and high, the highest bit first
/// and a set bit white: the frame's number, its exposure, the automatics that were on (1 exposure, 2 focus, 4 white
/// balance); then five blocks red, five green, five blue; then grey, 18 of 255 lighter with each stop of exposure.
Bytes encode(const FrameState& frame, Format format, const Size& size);

} // namespace UsbCamera
