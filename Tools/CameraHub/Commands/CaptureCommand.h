#pragma once

#include "Tools/CameraHub/Commands/Session.h"

#include <CameraHubClient/CaptureRequest.h>

#include <chrono>
#include <optional>
#include <string>

namespace CommandLine {

struct CaptureOptions {
    /// As chooseCamera takes it.
    std::string camera;
    std::optional<std::chrono::microseconds> exposure;
    /// Only without an exposure; none of both: the hub's default.
    std::optional<int> percent;
    std::chrono::milliseconds settle{250};
    /// A file, "-" for standard output, or a folder: one that is there, ends with "/", or is for several stills. Empty:
    /// this folder.
    std::string output;
    int count = 1;
    std::chrono::milliseconds every{0};
    bool isShown = false;
};

/// Throws Failure for options that contradict each other.
void checkOptions(const CaptureOptions& options, bool isJson);

/// Takes the stills, saves each, and prints its path.
void capture(const Session& session, const CaptureOptions& options);

} // namespace CommandLine
