#pragma once

#include "Platform/Interface/CameraPlatform.h"
#include "Platform/V4l2/Kernel/DeviceLister.h"
#include "Platform/V4l2/Kernel/SystemCalls.h"
#include "Platform/V4l2/Session/CameraLimits.h"

#include <memory>

namespace Platform::V4l2 {

/// The cameras of the Linux kernel. Never fails: a machine without cameras has none to report.
std::shared_ptr<CameraPlatform> createV4l2Platform();

/// The same on other system calls, devices and limits, for tests.
std::shared_ptr<CameraPlatform> createV4l2Platform(std::shared_ptr<SystemCalls> calls,
                                                   std::shared_ptr<DeviceLister> lister,
                                                   const CameraLimits& limits = {});

} // namespace Platform::V4l2
