#pragma once

#include <CameraHubClient/Camera.h>

#include <chrono>
#include <string>

namespace CommandLine {

/// The camera's name and the time, in UTC and to the millisecond, without an ending: sorted, names are in the order of
/// cameras and times. All characters of the name that mean something to a shell or a path become "-".
/// "Desk-Camera_2026-11-22T12-53-22.123Z". Any thread.
std::string stillFileName(const CameraHub::Camera& camera, std::chrono::system_clock::time_point time);

} // namespace CommandLine
