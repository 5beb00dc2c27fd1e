#pragma once

#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverContext.h"

/// Asks for a choice until it gets one that it knows, carries it out, and returns the next MenuState.
/// Raises the platform's errors. Never returns on an input that has failed or ended.
int runMainMenu(Console& console, DriverContext& context);

/// Four lines about a camera, the last one empty.
void printCamera(Console& console, const DriverCamera& camera);
