#pragma once

#include "Services/CameraTestDriver/Console.h"

/// Lets a person try cameras by hand, on standard input and output, until they leave or the platform
/// fails. 0 in every case. To be called before anything else runs.
int testDriverMain();

/// The same on any console.
int testDriverMain(Console& console);
