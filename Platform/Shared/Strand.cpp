#include "Platform/Shared/Strand.h"

#include <utility>

namespace Platform::Shared {

std::shared_ptr<Strand> Strand::create(std::shared_ptr<WorkerPool> pool) {
    return std::shared_ptr<Strand>(new Strand(std::move(pool)));
}

void Strand::post(Task task) {
    std::lock_guard lock(_mutex);
    _tasks.push_back(std::move(task));
    if (_tasks.size() > 1)
        return;
    try {
        _pool->post([self = shared_from_this()] { self->run(); });
    } catch (...) {
        _tasks.pop_back();
        throw;
    }
}

void Strand::postAt(std::chrono::steady_clock::time_point moment, Task task) {
    if (moment <= std::chrono::steady_clock::now()) {
        post(std::move(task));
        return;
    }
    // Then on a thread of the pool already: nothing can fail any more.
    _pool->postAt(moment, [self = shared_from_this(), task = std::move(task)]() mutable {
        if (self->add(std::move(task)))
            self->run();
    });
}

/// Whether the strand was idle, so that the caller has to run it.
bool Strand::add(Task task) {
    std::lock_guard lock(_mutex);
    _tasks.push_back(std::move(task));
    return _tasks.size() == 1;
}

void Strand::run() {
    std::unique_lock lock(_mutex);
    while (!_tasks.empty()) {
        Task task = std::move(_tasks.front());
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        _tasks.pop_front();
    }
}

} // namespace Platform::Shared
