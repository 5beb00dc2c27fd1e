#include "Platform/Shared/WorkerPool.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Platform::Shared {

using TimePoint = std::chrono::steady_clock::time_point;

/// What the threads share with the pool; lives until the last of them has ended.
struct WorkerPool::State : std::enable_shared_from_this<State> {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable quiet;
    std::deque<Task> ready;
    std::multimap<TimePoint, Task> timed;
    std::vector<std::thread> threads;
    std::size_t available = 0; // threads that wait or are about to
    std::size_t running = 0;   // tasks
    bool hurried = false;
    bool stopping = false;

    void work();
    void moveDueTasks();
    void provideThreads();
    void waitForWork(std::unique_lock<std::mutex>& lock);
    bool runsOnThisThread() const;
};

/// Called with the lock held, as the next two are.
void WorkerPool::State::moveDueTasks() {
    const TimePoint now = std::chrono::steady_clock::now();
    while (!timed.empty() && (hurried || timed.begin()->first <= now)) {
        ready.push_back(std::move(timed.begin()->second));
        timed.erase(timed.begin());
    }
}

/// Keeps a thread for each task that is ready, or else one that watches the time.
void WorkerPool::State::provideThreads() {
    const std::size_t needed = std::max<std::size_t>(ready.size(), timed.empty() ? 0 : 1);
    while (available < needed && !stopping) {
        threads.emplace_back([state = shared_from_this()] { state->work(); });
        ++available;
    }
    // The thread that is woken looks after the earliest moment too, and wakes the next one.
    if (needed > 0)
        wake.notify_one();
}

void WorkerPool::State::waitForWork(std::unique_lock<std::mutex>& lock) {
    if (timed.empty()) {
        wake.wait(lock);
        return;
    }
    const TimePoint earliest = timed.begin()->first;
    wake.wait_until(lock, earliest);
}

void WorkerPool::State::work() {
    std::unique_lock lock(mutex);
    for (;;) {
        moveDueTasks();
        if (ready.empty()) {
            if (stopping)
                return;
            waitForWork(lock);
            continue;
        }
        Task task = std::move(ready.front());
        ready.pop_front();
        --available;
        ++running;
        provideThreads();
        lock.unlock();
        task();
        task = nullptr; // may release the last owner of anything, the pool included: without the lock
        lock.lock();
        --running;
        ++available;
        quiet.notify_all();
    }
}

bool WorkerPool::State::runsOnThisThread() const {
    return std::any_of(threads.begin(), threads.end(),
                       [](const std::thread& thread) { return thread.get_id() == std::this_thread::get_id(); });
}

WorkerPool::WorkerPool() : _state(std::make_shared<State>()) {}

WorkerPool::~WorkerPool() {
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(_state->mutex);
        _state->stopping = true;
        threads = std::move(_state->threads);
        _state->threads.clear();
    }
    _state->wake.notify_all();
    for (std::thread& thread : threads)
        if (thread.get_id() == std::this_thread::get_id())
            thread.detach();
        else
            thread.join();
}

void WorkerPool::post(Task task) {
    std::lock_guard lock(_state->mutex);
    _state->ready.push_back(std::move(task));
    _state->provideThreads();
}

void WorkerPool::postAt(TimePoint moment, Task task) {
    std::lock_guard lock(_state->mutex);
    _state->timed.emplace(moment, std::move(task));
    _state->moveDueTasks();
    _state->provideThreads();
}

void WorkerPool::windDown(std::chrono::milliseconds limit) {
    std::unique_lock lock(_state->mutex);
    _state->hurried = true;
    _state->moveDueTasks();
    _state->provideThreads();
    if (_state->runsOnThisThread())
        return;
    _state->quiet.wait_for(lock, limit, [this] { return _state->ready.empty() && _state->running == 0; });
}

} // namespace Platform::Shared
