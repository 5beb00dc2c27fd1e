#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/LarkspurWindowsCameraHub/FoundCamera.h"

#include <cstdint>
#include <vector>

/// What turns a device of the platform into camera records, and a record into an open camera.
/// Any thread. All of it blocks its caller for as long as the platform takes.
namespace CameraHelper {

/// The records of the colour sources in the group of a device that the watcher reported, in the group's
/// order. Opens each camera briefly to learn its exposure range. Never raises a platform failure: it logs
/// it and returns the records made before it.
std::vector<FoundCamera> processDeviceInfo(Platform::DeviceInformation device);

/// The position of the source's best video profile: the largest picture, among those the highest frame
/// rate, among those the last. A profile has to exceed the frame rate to count as an improvement. Raises
/// outOfBounds for a source without such a profile, noInterface for one that describes none.
std::int32_t PickBestVideoProfile(Platform::MediaFrameSourceInfo source, double minimumFrameRate);

/// Opens the camera for video, in the format of its record. Does not raise: after a failure, which it
/// logs, the capture is closed; for a camera that the platform does not have it is uninitialised. Its
/// first use then raises.
Platform::MediaCapture CreateMediaCapture(FoundCamera camera);

} // namespace CameraHelper

/// Logs a video profile as one line, "NV12: 1920x1080 @ 29.97 fps". The hundredths have no leading zero.
void printMediaDesc(Platform::MediaCaptureVideoProfileMediaDescription description);
