#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>
#include <type_traits>
#include <utility>

namespace Platform::Shared {

/// Ends the operation with what the work returns or with the error that it raises.
template <typename T, typename Work> void endWith(const AsyncOperationSource<T>& source, Work&& work) {
    try {
        if constexpr (std::is_void_v<T>) {
            work();
            source.complete();
        } else {
            source.complete(work());
        }
    } catch (const winrt::hresult_error& error) {
        source.fail(error);
    }
}

/// An operation that runs the work on a thread of the pool. The work must be copyable.
template <typename T, typename Work> IAsyncOperation<T> runAsync(const std::shared_ptr<WorkerPool>& pool, Work work) {
    AsyncOperationSource<T> source;
    pool->post([pool, source, work = std::move(work)]() mutable { endWith(source, work); });
    return source.operation();
}

} // namespace Platform::Shared
