#pragma once

#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverContext.h"

/// Asks for a command for the selected connection until it gets one that it knows, carries it out, and
/// returns the next MenuState. Raises the platform's errors. Never returns on an input that has failed or
/// ended.
int runCameraMenu(Console& console, DriverContext& context);
