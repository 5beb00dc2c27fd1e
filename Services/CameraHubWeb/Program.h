#pragma once

namespace CameraHubWeb {

/// Runs camera-hub-web until SIGTERM or SIGINT; returns its exit code.
int runProgram(int count, const char* const* texts);

} // namespace CameraHubWeb
