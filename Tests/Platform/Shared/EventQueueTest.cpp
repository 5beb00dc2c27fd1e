#include "Platform/Shared/EventQueue.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <future>
#include <latch>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using Platform::Shared::EventQueue;
using Platform::Shared::WorkerPool;

namespace {

constexpr std::chrono::seconds patience(10);

std::u16string idOf(int device) {
    const std::string digits = std::to_string(device);
    return {digits.begin(), digits.end()};
}

TEST(EventQueueTest, AsManyEventsRunSideBySideAsItsLimitAndNoMore) {
    constexpr int devices = 2000;
    const auto queue = EventQueue::create(std::make_shared<WorkerPool>());
    std::promise<void> release;
    const auto released = release.get_future().share();
    std::latch full(EventQueue::limit); // passes only if so many run at the same time
    std::latch all(devices);
    std::mutex mutex;
    std::size_t running = 0;
    std::size_t most = 0;
    for (int device = 0; device < devices; ++device)
        queue->post(idOf(device), [&, released] {
            {
                std::lock_guard lock(mutex);
                ++running;
                if (running > most) {
                    most = running;
                    if (most <= EventQueue::limit)
                        full.count_down();
                }
            }
            released.wait();
            std::lock_guard lock(mutex);
            --running;
            all.count_down();
        });
    full.wait();
    release.set_value();
    all.wait();
    std::lock_guard lock(mutex);
    EXPECT_EQ(most, EventQueue::limit);
}

/// What the events of each device did, where each of several posts its number.
std::map<int, std::vector<int>> orderOfEvents(int devices, int eventsOfEach) {
    const auto queue = EventQueue::create(std::make_shared<WorkerPool>());
    std::latch all(static_cast<std::ptrdiff_t>(devices) * eventsOfEach);
    std::mutex mutex;
    std::map<int, std::vector<int>> order;
    for (int event = 0; event < eventsOfEach; ++event)
        for (int device = 0; device < devices; ++device)
            queue->post(idOf(device), [&, device, event] {
                {
                    std::lock_guard lock(mutex);
                    order[device].push_back(event);
                }
                all.count_down();
            });
    all.wait();
    std::lock_guard lock(mutex);
    return order;
}

TEST(EventQueueTest, EventsOfOneDeviceRunInOrderAlsoBeyondTheLimit) {
    const auto order = orderOfEvents(1000, 3);
    ASSERT_EQ(order.size(), 1000U);
    for (const auto& [device, events] : order)
        EXPECT_EQ(events, (std::vector{0, 1, 2})) << device;
}

TEST(EventQueueTest, EventsRunOneAfterTheOtherWhereNoThreadCanBeMade) {
    EXPECT_EQ(runInChild([] {
                  const auto pool = std::make_shared<WorkerPool>();
                  ASSERT_TRUE(letThreadStartsFail());
                  const auto queue = EventQueue::create(pool);
                  std::latch all(100);
                  for (int event = 0; event < 100; ++event)
                      queue->post(idOf(event % 10), [&all] { all.count_down(); });
                  all.wait();
              }),
              0);
}

TEST(EventQueueTest, RunsWhatWasPostedAlsoAfterItsRelease) {
    auto queue = EventQueue::create(std::make_shared<WorkerPool>());
    std::promise<void> ran;
    queue->post(u"d", [&] { ran.set_value(); });
    queue.reset();
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
}

} // namespace
