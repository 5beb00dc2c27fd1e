#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverContext.h"

/// Appends the colour cameras of the machine to the available ones and tells of every source that it sees.
/// Blocks without limit; raises the platform's errors.
void listAvailableCameras(Console& console, DriverContext& context);

/// A capture that has the camera open, or an uninitialised one where no source has its id and kind.
/// Blocks without limit; raises the platform's errors.
Platform::MediaCapture connectCamera(DriverCamera camera);
