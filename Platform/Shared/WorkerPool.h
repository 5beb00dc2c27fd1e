#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace Platform::Shared {

/// Threads of the platform. There is always one for a task that is ready, so that no slow task delays
/// another; a task that waits for its moment takes none. Any thread. One of its own may release it: a task
/// that runs at that time goes on to its end. Whoever posts a task lets the task own the pool; what has
/// not begun when the pool goes and waits for its moment is dropped.
/// An exception that leaves a task ends the process.
///
/// There is no upper bound, since tasks wait for tasks: an event's handler for an operation, an operation of the
/// catalogue of devices for the examination of a node. Under a bound the waiting ones could hold every thread, and
/// nothing would run that they wait for. What limits the number is who posts: a watcher so many events at a time
/// (EventQueue), an operation for each caller that waits for it, and a few stills; threads that are idle are used
/// before a new one is made, and stay until the pool goes.
///
/// For the same reason a task for which the system has no thread left is refused rather than kept, unless whoever posts
/// it says that it can wait.
class WorkerPool {
public:
    using Task = std::function<void()>;

    /// Makes the first thread, so that tasks that can wait always find one. Raises where it cannot be made.
    WorkerPool();
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Raises winrt::hresult_error where no thread is idle, besides one that watches the time for tasks that wait for
    /// their moment, and none can be made.
    void post(Task task);

    /// For a task that no other one waits for: where no thread can be made, it waits for one that comes free.
    void postWhenFree(Task task);

    /// Tasks of one moment begin in the order in which they were posted, and must not wait for each other: they share
    /// what threads there are where no more can be made. Raises where there is none to watch the time besides
    /// those that have a task.
    void postAt(std::chrono::steady_clock::time_point moment, Task task);

    /// Ends all delays, those of later tasks too, and waits until no task is left or the limit has passed;
    /// does not wait on a thread of the pool itself. For the end of a platform.
    void windDown(std::chrono::milliseconds limit);

private:
    struct State;

    std::shared_ptr<State> _state;
};

} // namespace Platform::Shared
