#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>
#include <utility>

namespace Platform::Shared {

/// An operation that runs the work on a thread of the pool, and fails where that has none for it. The work must be
/// copyable.
template <typename T, typename Work> IAsyncOperation<T> runAsync(const std::shared_ptr<WorkerPool>& pool, Work work) {
    AsyncOperationSource<T> source;
    try {
        pool->post([pool, source, work = std::move(work)]() mutable { source.endWith(work); });
    } catch (const winrt::hresult_error& error) {
        source.fail(error);
    }
    return source.operation();
}

} // namespace Platform::Shared
