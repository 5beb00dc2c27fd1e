#pragma once

#include "Framework/CXX/System/RegistryFile.h"

#include <chrono>
#include <memory>

// The settings of the mode that lets the hub die on purpose, so that crash recording can be tried. Read anew at each
// call; what can't be read has its default. Any thread.

/// The key with the hub's parameters; null if there is none.
std::shared_ptr<const Halden::System::RegistryKey> openParametersKey();

/// Off by default.
bool isSimulatedCrashModeEnabled();

/// How long the mode waits before it throws; at least one second, 2500 ms by default.
std::chrono::milliseconds appThrottleInterval();
