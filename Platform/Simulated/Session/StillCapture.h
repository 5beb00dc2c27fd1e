#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/ImageEncodingProperties.h"
#include "Platform/Interface/RandomAccessStream.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>

namespace Platform::Simulated {

/// Takes a still of the capture's camera. The exposure in force at the call counts; the camera's delay
/// passes between the call and the end. Never ends if the camera goes meanwhile. Raises at once for a
/// fault, for a capture that is not open, and for an encoding other than PNG.
IAsyncAction captureStill(const std::shared_ptr<CaptureCore>& core, const ImageEncodingProperties& encoding,
                          const RandomAccessStream& stream);

} // namespace Platform::Simulated
