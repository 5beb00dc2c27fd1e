#pragma once

#include "Platform/Shared/WorkerPool.h"

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace Platform::Shared {

/// Runs its tasks on a pool, one at a time, in the order in which they were posted or came due. A task
/// that has been posted runs also if all handles are released. A task must not wait for another one of the pool's.
/// Posting raises where the pool has no thread for it. Any thread.
class Strand : public std::enable_shared_from_this<Strand> {
public:
    using Task = WorkerPool::Task;

    static std::shared_ptr<Strand> create(std::shared_ptr<WorkerPool> pool);

    void post(Task task);
    void postAt(std::chrono::steady_clock::time_point moment, Task task);

private:
    explicit Strand(std::shared_ptr<WorkerPool> pool) : _pool(std::move(pool)) {}

    bool add(Task task);
    void run();

    const std::shared_ptr<WorkerPool> _pool;
    std::mutex _mutex;       // guards all below
    std::deque<Task> _tasks; // the first of which runs, or is about to
};

} // namespace Platform::Shared
