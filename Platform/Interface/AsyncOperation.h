#pragma once

#include "Platform/Interface/HresultError.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace Platform {

/// How far an operation has come. Canceled is never reached: nothing cancels an operation.
enum class AsyncStatus { Started = 0, Completed = 1, Canceled = 2, Error = 3 };

template <typename T> class AsyncOperationSource;

/// A platform operation under way that ends, once, with a T or with an error; a shared handle, of which all copies see
/// the same operation. Releasing the handles does not end the operation. It may never end: see its member. Any thread.
template <typename T> class IAsyncOperation {
public:
    /// Gets the operation and how it ended, Completed or Error. Throws nothing.
    using CompletedHandler = std::function<void(const IAsyncOperation&, AsyncStatus)>;

    /// Raises nothing.
    AsyncStatus Status() const {
        std::lock_guard lock(_state->mutex);
        return _state->status;
    }

    /// Sets the one handler, which runs once: when the operation ends, on any thread, or at once, within this call, if
    /// it has ended already. Released when it has run, or with an operation that never ends. Raises handlerTaken for a
    /// second handler, also after the first has run.
    void Completed(CompletedHandler handler) const {
        std::unique_lock lock(_state->mutex);
        if (_state->handlerSet)
            throw winrt::hresult_error(winrt::result::handlerTaken, u"The operation has a handler already.");
        _state->handlerSet = true;
        if (_state->status == AsyncStatus::Started) {
            _state->handler = std::move(handler);
            return;
        }
        const AsyncStatus status = _state->status;
        lock.unlock();
        handler(*this, status);
    }

    /// The result, as often as it is asked for. Raises the operation's error, and illegalMethodCall while it is still
    /// under way.
    T GetResults() const {
        std::lock_guard lock(_state->mutex);
        if (_state->status == AsyncStatus::Started)
            throw winrt::hresult_error(winrt::result::illegalMethodCall, u"The operation has not ended yet.");
        if (_state->error)
            throw winrt::hresult_error(*_state->error);
        if constexpr (!std::is_void_v<T>)
            return *_state->value;
    }

private:
    friend class AsyncOperationSource<T>;

    struct State {
        std::mutex mutex;
        AsyncStatus status = AsyncStatus::Started;
        bool handlerSet = false;
        CompletedHandler handler;
        std::optional<std::conditional_t<std::is_void_v<T>, std::monostate, T>> value;
        std::optional<winrt::hresult_error> error;
    };

    explicit IAsyncOperation(std::shared_ptr<State> state) : _state(std::move(state)) {}

    std::shared_ptr<State> _state;
};

/// An operation without a result: GetResults only raises the error.
using IAsyncAction = IAsyncOperation<void>;

/// The platform's end of an operation: whoever holds it ends the operation, exactly once, and runs its handler there.
/// An operation whose source goes away before that never ends. Any thread.
template <typename T> class AsyncOperationSource {
public:
    AsyncOperationSource() : _state(std::make_shared<typename IAsyncOperation<T>::State>()) {}

    /// What the platform returns to its caller; the same operation each time.
    IAsyncOperation<T> operation() const { return IAsyncOperation<T>(_state); }

    /// Ends the operation with its result; without effect on one that has ended.
    template <typename... Value> void complete(Value&&... value) const {
        end(AsyncStatus::Completed, [&](auto& state) { state.value.emplace(std::forward<Value>(value)...); });
    }

    /// Ends the operation with an error; without effect on one that has ended.
    void fail(winrt::hresult_error error) const {
        end(AsyncStatus::Error, [&](auto& state) { state.error.emplace(std::move(error)); });
    }

    /// Ends the operation with what the work returns, or with the winrt::hresult_error that it raises; any other
    /// exception passes on, and the operation stays under way.
    template <typename Work> void endWith(Work&& work) const {
        try {
            if constexpr (std::is_void_v<T>) {
                work();
                complete();
            } else {
                complete(work());
            }
        } catch (const winrt::hresult_error& error) {
            fail(error);
        }
    }

private:
    template <typename Store> void end(AsyncStatus status, Store store) const {
        typename IAsyncOperation<T>::CompletedHandler handler;
        {
            std::lock_guard lock(_state->mutex);
            if (_state->status != AsyncStatus::Started)
                return;
            store(*_state);
            _state->status = status;
            handler = std::exchange(_state->handler, nullptr);
        }
        if (handler)
            handler(operation(), status);
    }

    std::shared_ptr<typename IAsyncOperation<T>::State> _state;
};

} // namespace Platform
