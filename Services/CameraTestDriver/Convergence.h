#pragma once

#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverConnection.h"

/// Switches the three automatics as told, gives them two seconds, then switches those off that were on.
/// Three false flags do nothing at all. Blocks; raises the platform's errors.
void converge(Console& console, const DriverConnection& connection, bool exposure, bool focus, bool wb);
