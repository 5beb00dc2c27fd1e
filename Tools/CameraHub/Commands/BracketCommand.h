#pragma once

#include "Tools/CameraHub/Commands/Session.h"

#include <chrono>
#include <string>
#include <vector>

namespace CommandLine {

struct BracketOptions {
    std::string camera;
    std::chrono::microseconds from{0};
    std::chrono::microseconds to{0};
    std::chrono::milliseconds settle{250};
    /// A folder, which is made where it is missing. Empty: this one.
    std::string output;
};

/// Exposures one stop apart, the first from `from`, the last at most half a stop beyond `to`; all of them within half a
/// stop of what the camera has. Empty where none is. Both ends from 1 us. Any thread.
std::vector<std::chrono::microseconds> stops(std::chrono::microseconds from, std::chrono::microseconds to,
                                             const CameraHub::Camera& camera);

/// Takes a still for each stop and a contact sheet of them, and prints their paths.
void bracket(const Session& session, const BracketOptions& options);

} // namespace CommandLine
