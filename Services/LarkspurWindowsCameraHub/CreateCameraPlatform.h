#pragma once

#include "Platform/Interface/CameraPlatform.h"

#include <memory>

/// The camera platform that CAMERA_HUB_PLATFORM names. The one place that knows which platforms there
/// are. Raises a winrt::hresult_error for a name without a platform, and what the platform raises.
std::shared_ptr<Platform::CameraPlatform> createCameraPlatform();
