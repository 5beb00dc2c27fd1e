#pragma once

#include "Platform/Shared/WorkerPool.h"

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace Platform::Shared {

/// Runs the events of devices on a pool: those of one device in order and one at a time, those of different devices
/// side by side, as many as `limit`; further ones wait, in the order in which they came. An event that has been posted
/// runs also if all handles are released. Any thread.
class EventQueue : public std::enable_shared_from_this<EventQueue> {
public:
    using Event = WorkerPool::Task;

    /// Far more than any machine has cameras, far fewer than it has threads: an event takes one, and another one while
    /// its handler waits for an operation.
    static constexpr std::size_t limit = 256;

    static std::shared_ptr<EventQueue> create(std::shared_ptr<WorkerPool> pool);

    void post(const std::u16string& deviceId, Event event);

private:
    using Events = std::map<std::u16string, std::deque<Event>>;

    explicit EventQueue(std::shared_ptr<WorkerPool> pool) : _pool(std::move(pool)) {}

    void run();

    const std::shared_ptr<WorkerPool> _pool;
    std::mutex _mutex;                   // guards all below
    Events _events;                      // by device; the first of each runs, or is the device's next
    std::deque<Events::iterator> _ready; // whose next event may run
    std::size_t _runners = 0;            // tasks of the pool that run events, or are about to
};

} // namespace Platform::Shared
