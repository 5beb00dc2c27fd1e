#include "Platform/Shared/Strand.h"

#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

using Platform::Shared::Strand;
using Platform::Shared::WorkerPool;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

TEST(StrandTest, RunsItsTasksInOrderAndOneAtATime) {
    const auto strand = Strand::create(std::make_shared<WorkerPool>());
    std::atomic<int> running = 0;
    std::vector<int> order; // unguarded: the strand is the guard
    std::promise<void> last;
    for (int i = 0; i < 500; ++i)
        strand->post([&, i] {
            EXPECT_EQ(++running, 1);
            order.push_back(i);
            --running;
            if (i == 499)
                last.set_value();
        });
    ASSERT_EQ(last.get_future().wait_for(patience), std::future_status::ready);
    ASSERT_EQ(order.size(), 500U);
    for (int i = 0; i < 500; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(StrandTest, ABlockedStrandDelaysNoOther) {
    const auto pool = std::make_shared<WorkerPool>();
    const auto blocked = Strand::create(pool);
    const auto free = Strand::create(pool);
    std::promise<void> release;
    std::promise<void> ran;
    blocked->post([released = release.get_future().share()] { released.wait(); });
    free->post([&] { ran.set_value(); });
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
    release.set_value();
}

TEST(StrandTest, AWaitingTaskDelaysNoneOfTheOthers) {
    const auto strand = Strand::create(std::make_shared<WorkerPool>());
    std::promise<void> later;
    std::promise<void> now;
    std::atomic<bool> laterRan = false;
    strand->postAt(steady_clock::now() + milliseconds(800), [&] {
        laterRan = true;
        later.set_value();
    });
    strand->post([&] {
        EXPECT_FALSE(laterRan);
        now.set_value();
    });
    EXPECT_EQ(now.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_EQ(later.get_future().wait_for(patience), std::future_status::ready);
}

TEST(StrandTest, RunsWhatWasPostedAlsoAfterItsRelease) {
    auto strand = Strand::create(std::make_shared<WorkerPool>());
    std::promise<void> ran;
    strand->postAt(steady_clock::now() + milliseconds(20), [&] { ran.set_value(); });
    strand.reset();
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
}

} // namespace
