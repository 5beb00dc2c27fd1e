#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/CameraTestDriver/Console.h"

/// Tells the settings that an open camera has, and the state of its stream. Raises the platform's errors.
void printCameraStatus(Console& console, Platform::MediaCapture capture);
