#pragma once

#include <chrono>

namespace Halden::System {

// What a service manager like systemd is told by the processes that it starts. Without one that wants to know, where
// the environment has no NOTIFY_SOCKET, nothing happens; one that cannot be reached is no error. The variables stay in
// the environment, where the library looks for them each time: a program started from here that is not to speak for
// this one needs an environment of its own, as the crash helper has. Any thread, while none changes the environment.

/// That the process has started, and does its work from now on.
void notifyReady();

/// That the process is not stuck.
void notifyAlive();

/// How long the service manager waits for the next notifyAlive() before it takes the process for stuck; 0 if it does
/// not.
std::chrono::microseconds watchdogTime();

} // namespace Halden::System
