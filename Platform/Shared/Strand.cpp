#include "Platform/Shared/Strand.h"

#include <utility>

namespace Platform::Shared {

std::shared_ptr<Strand> Strand::create(std::shared_ptr<WorkerPool> pool) {
    return std::shared_ptr<Strand>(new Strand(std::move(pool)));
}

void Strand::post(Task task) {
    std::lock_guard lock(_mutex);
    _tasks.push_back(std::move(task));
    if (!std::exchange(_scheduled, true))
        schedule();
}

void Strand::postAt(std::chrono::steady_clock::time_point moment, Task task) {
    if (moment <= std::chrono::steady_clock::now()) {
        post(std::move(task));
        return;
    }
    _pool->postAt(moment,
                  [self = shared_from_this(), task = std::move(task)]() mutable { self->post(std::move(task)); });
}

void Strand::schedule() {
    _pool->post([self = shared_from_this()] { self->runNext(); });
}

void Strand::runNext() {
    std::unique_lock lock(_mutex);
    Task task = std::move(_tasks.front());
    _tasks.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
    if (_tasks.empty())
        _scheduled = false;
    else
        schedule();
}

} // namespace Platform::Shared
