#pragma once

#include "Tools/CameraHub/Commands/Session.h"

namespace CommandLine {

struct ListOptions {
    bool isWatching = false;
};

/// Prints the cameras; watching, again whenever they have changed, until it is interrupted.
void list(const Session& session, const ListOptions& options);

} // namespace CommandLine
