#pragma once

#include "Platform/Interface/DeviceInformation.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"

#include <string_view>

/// The names of the platform's enumerations for people; empty for a value that has none.
std::string_view nameOf(Platform::MediaStreamType type);
std::string_view nameOf(Platform::MediaFrameSourceKind kind);
std::string_view nameOf(Platform::Panel panel);
