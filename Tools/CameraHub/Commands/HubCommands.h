#pragma once

#include "Tools/CameraHub/Commands/Session.h"

#include <chrono>
#include <string>

namespace CommandLine {

/// Prints the versions of the hub and of this program.
void version(const Session& session);

struct DiagnosticsOptions {
    /// Of the hub's machine, from its root.
    std::string folder;
};

/// Has the hub's logs written to a folder until it is interrupted. Throws Failure where the hub cannot.
void diagnostics(const Session& session, const DiagnosticsOptions& options);

struct HealthOptions {
    /// For all of it together, from 1 ms.
    std::chrono::milliseconds timeout = std::chrono::minutes(1);
};

/// Throws, as all commands do, unless both ports of the hub answer within that time.
void health(const Session& session, const HealthOptions& options);

} // namespace CommandLine
