#pragma once

#include "Platform/Imaging/Png/RunBeside.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>

namespace Platform::Shared {

/// Work goes to a thread of the pool; none where the machine has one processor, on which that would gain nothing. Any
/// thread.
Imaging::Png::RunBeside runBeside(std::shared_ptr<WorkerPool> pool);

} // namespace Platform::Shared
