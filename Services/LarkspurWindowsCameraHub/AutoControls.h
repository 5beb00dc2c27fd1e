#pragma once

#include "Platform/Interface/MediaCapture.h"

/// Each switches one automatic of an open camera on or off, through the control of the newer generation
/// where the camera has it, else through the older one, and logs the outcome. A camera that refuses, or
/// has neither control, is only logged. Blocks until the platform is done; raises its errors.
void autoExposure(Platform::MediaCapture capture, bool on);

/// With the newer control the preset is Auto for both values of `on`: turning off has no effect on the
/// device.
void autoFocus(Platform::MediaCapture capture, bool on);

/// As autoFocus.
void autoWhiteBalance(Platform::MediaCapture capture, bool on);
