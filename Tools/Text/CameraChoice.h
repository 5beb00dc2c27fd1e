#pragma once

#include <CameraHubClient/Camera.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace CommandLine {

/// No camera, or more than one, fits; what() is one line that lists those that there are.
class NoSuchCamera : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Make and model, or if both are empty, the uid.
std::string cameraName(const CameraHub::Camera& camera);

/// The camera of that uid, else of that number (from 1, in the order of the list), else the one whose name has that
/// text in it, in small or capital letters of ASCII. An empty text is for the first one. Throws NoSuchCamera.
const CameraHub::Camera& chooseCamera(const std::vector<CameraHub::Camera>& cameras, const std::string& wanted);

} // namespace CommandLine
