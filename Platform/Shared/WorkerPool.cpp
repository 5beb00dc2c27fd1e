#include "Platform/Shared/WorkerPool.h"

#include "Platform/Interface/HresultError.h"
#include "Platform/Shared/StartThread.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace Platform::Shared {

using TimePoint = std::chrono::steady_clock::time_point;

/// What the threads share with the pool; lives until the last of them has ended. Members but `work` are called with the
/// lock held.
struct WorkerPool::State : std::enable_shared_from_this<State> {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable quiet;
    std::deque<Task> ready;
    std::deque<Task> patient; // those that can wait
    std::multimap<TimePoint, Task> timed;
    std::vector<std::thread> threads;
    std::size_t available = 0; // threads that wait or are about to
    std::size_t running = 0;   // tasks
    bool hurried = false;
    bool stopping = false;

    void work();
    void moveDueTasks();
    void provideThreads(std::size_t count);
    bool tryToProvideThreads(std::size_t count);
    void wakeOne();
    std::optional<Task> takeTask();
    void waitForWork(std::unique_lock<std::mutex>& lock);
    bool runsOnThisThread() const;
    bool isQuiet() const { return ready.empty() && patient.empty() && running == 0; }

    /// A thread for each task that is ready, which may keep it for long, and one that watches the time.
    std::size_t neededThreads() const { return ready.size() + (timed.empty() ? 0 : 1); }
};

void WorkerPool::State::moveDueTasks() {
    const TimePoint now = std::chrono::steady_clock::now();
    while (!timed.empty() && (hurried || timed.begin()->first <= now)) {
        ready.push_back(std::move(timed.begin()->second));
        timed.erase(timed.begin());
    }
}

/// Has so many threads be available. Raises.
void WorkerPool::State::provideThreads(std::size_t count) {
    while (available < count && !stopping) {
        threads.emplace_back(); // so that nothing can fail any more once the thread runs
        try {
            threads.back() = startThread("the worker pool", [state = shared_from_this()] { state->work(); });
        } catch (...) {
            threads.pop_back();
            throw;
        }
        ++available;
    }
}

bool WorkerPool::State::tryToProvideThreads(std::size_t count) try {
    provideThreads(count);
    return true;
} catch (const winrt::hresult_error&) {
    return false; // those that there are go on
}

/// The thread that is woken looks after the earliest moment too, and wakes the next one.
void WorkerPool::State::wakeOne() {
    if (!ready.empty() || !patient.empty() || !timed.empty())
        wake.notify_one();
}

/// What this thread is to run, which is then available no more; nothing where it has to wait.
std::optional<WorkerPool::Task> WorkerPool::State::takeTask() {
    moveDueTasks();
    // What can wait must not take the last thread, which watches the time for those that others wait for.
    const bool canSpareOne = !ready.empty() || (!patient.empty() && tryToProvideThreads(neededThreads() + 1));
    if (!canSpareOne)
        return std::nullopt;
    auto& tasks = ready.empty() ? patient : ready;
    Task task = std::move(tasks.front());
    tasks.pop_front();
    --available;
    ++running;
    tryToProvideThreads(neededThreads());
    wakeOne();
    return task;
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
        std::optional<Task> task = takeTask();
        if (!task) {
            if (stopping)
                return;
            waitForWork(lock);
            continue;
        }
        lock.unlock();
        (*task)();
        task.reset(); // may release the last owner of anything, the pool included: without the lock
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

WorkerPool::WorkerPool() : _state(std::make_shared<State>()) {
    std::lock_guard lock(_state->mutex);
    _state->provideThreads(1);
}

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
    _state->provideThreads(_state->neededThreads() + 1);
    _state->ready.push_back(std::move(task));
    _state->wakeOne();
}

void WorkerPool::postWhenFree(Task task) {
    std::lock_guard lock(_state->mutex);
    _state->patient.push_back(std::move(task));
    _state->tryToProvideThreads(_state->neededThreads() + _state->patient.size());
    _state->wakeOne();
}

void WorkerPool::postAt(TimePoint moment, Task task) {
    std::lock_guard lock(_state->mutex);
    _state->provideThreads(_state->ready.size() + 1);
    _state->timed.emplace(moment, std::move(task));
    _state->moveDueTasks();
    _state->tryToProvideThreads(_state->neededThreads());
    _state->wakeOne();
}

void WorkerPool::windDown(std::chrono::milliseconds limit) {
    std::unique_lock lock(_state->mutex);
    _state->hurried = true;
    _state->moveDueTasks();
    _state->tryToProvideThreads(_state->neededThreads());
    _state->wakeOne();
    if (_state->runsOnThisThread())
        return;
    _state->quiet.wait_for(lock, limit, [this] { return _state->isQuiet(); });
}

} // namespace Platform::Shared
