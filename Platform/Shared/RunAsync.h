#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>
#include <utility>

namespace Platform::Shared {

/// An operation that runs the work on a thread of the pool. The work must be copyable.
template <typename T, typename Work> IAsyncOperation<T> runAsync(const std::shared_ptr<WorkerPool>& pool, Work work) {
    AsyncOperationSource<T> source;
    pool->post([pool, source, work = std::move(work)]() mutable { source.endWith(work); });
    return source.operation();
}

} // namespace Platform::Shared
