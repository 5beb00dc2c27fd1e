#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace Platform {

/// Set by the end of an operation, whatever that is. Waiter and handler own it together: an operation that ends after
/// its waiter has given up still finds it. Any thread. The members raise nothing.
class CompletionFlag {
public:
    /// A flag that the end of the operation sets; takes the operation's one handler, and raises handlerTaken where
    /// there is one already.
    template <typename T> static std::shared_ptr<CompletionFlag> of(const IAsyncOperation<T>& operation) {
        auto flag = std::make_shared<CompletionFlag>();
        operation.Completed([flag](const IAsyncOperation<T>&, AsyncStatus) { flag->set(); });
        return flag;
    }

    /// Wakes all that wait, now and later.
    void set() {
        {
            std::lock_guard lock(_mutex);
            _isSet = true;
        }
        _condition.notify_all();
    }

    /// Without a limit.
    void wait() {
        std::unique_lock lock(_mutex);
        _condition.wait(lock, [this] { return _isSet; });
    }

    /// True when the flag was set before the moment had passed.
    template <typename TimePoint> bool waitUntil(const TimePoint& moment) {
        std::unique_lock lock(_mutex);
        return _condition.wait_until(lock, moment, [this] { return _isSet; });
    }

private:
    std::mutex _mutex;
    std::condition_variable _condition;
    bool _isSet = false;
};

/// Blocks the calling thread until the operation ends, without a limit; the result, or the operation's error raised.
/// Not for operations that may never end, nor within a handler that such an end needs. Any thread.
template <typename T> T blockingWait(const IAsyncOperation<T>& operation) {
    CompletionFlag::of(operation)->wait();
    return operation.GetResults();
}

} // namespace Platform
