#pragma once

#include "Tools/CameraHub/Commands/Session.h"

#include <chrono>

namespace CommandLine {

struct FindOptions {
    /// How long to look at most.
    std::chrono::milliseconds timeout = std::chrono::seconds(5);
};

/// Prints the hubs on the network. Throws Failure if there is none.
void find(const Session& session, const FindOptions& options);

} // namespace CommandLine
