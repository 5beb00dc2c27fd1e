#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/CameraTestDriver/Console.h"

// Each steps one control of an open camera up or down, once, by the control's own step size. The range is
// told but not applied: the device decides what becomes of a value beyond it. Blocks; raises the platform's
// errors.

/// Turns automatic exposure off. Prefers the control of the newer generation; with the older one, the
/// first refusal ends the command.
void adjustExposure(Console& console, Platform::MediaCapture capture, bool up);

/// Turns the automatic off and goes on after every refusal; a value that cannot be read counts as 0.
void adjustBrightness(Console& console, Platform::MediaCapture capture, bool up);

/// As adjustBrightness.
void adjustContrast(Console& console, Platform::MediaCapture capture, bool up);

/// Leaves a camera in automatic mode as it is.
void adjustIso(Console& console, Platform::MediaCapture capture, bool up);
