#include "Platform/Shared/WorkerPool.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"
#include "Tests/Support/RaisedError.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using Platform::Shared::WorkerPool;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

TEST(WorkerPoolTest, ASlowTaskDelaysNoOther) {
    const auto pool = std::make_shared<WorkerPool>();
    std::latch allRun(20); // passes only if 20 tasks run at the same time
    std::promise<void> last;
    std::atomic<int> ended = 0;
    for (int i = 0; i < 20; ++i)
        pool->post([&, pool] {
            allRun.arrive_and_wait();
            if (++ended == 20)
                last.set_value();
        });
    EXPECT_EQ(last.get_future().wait_for(patience), std::future_status::ready);
}

TEST(WorkerPoolTest, ATaskWaitsForItsMoment) {
    const auto pool = std::make_shared<WorkerPool>();
    const auto moment = steady_clock::now() + milliseconds(30);
    std::promise<steady_clock::time_point> ran;
    pool->postAt(moment, [&, pool] { ran.set_value(steady_clock::now()); });
    auto result = ran.get_future();
    ASSERT_EQ(result.wait_for(patience), std::future_status::ready);
    EXPECT_GE(result.get(), moment);
}

TEST(WorkerPoolTest, TasksRunInTheOrderOfTheirMoments) {
    const auto pool = std::make_shared<WorkerPool>();
    const auto now = steady_clock::now();
    std::mutex mutex;
    std::vector<int> order;
    std::promise<void> last;
    const auto note = [&](int number) {
        std::lock_guard lock(mutex);
        order.push_back(number);
        if (order.size() == 3)
            last.set_value();
    };
    // Far apart: those that a busy machine finds due at once run side by side.
    pool->postAt(now + milliseconds(810), [&, pool] { note(3); });
    pool->postAt(now + milliseconds(10), [&, pool] { note(1); });
    pool->postAt(now + milliseconds(410), [&, pool] { note(2); });
    ASSERT_EQ(last.get_future().wait_for(patience), std::future_status::ready);
    std::lock_guard lock(mutex);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(WorkerPoolTest, ATaskComesDueWhileAllThreadsAreBusy) {
    const auto pool = std::make_shared<WorkerPool>();
    std::promise<void> release;
    const auto released = release.get_future().share();
    std::latch busy(3);
    std::promise<void> due;
    pool->postAt(steady_clock::now() + milliseconds(30), [&, pool] { due.set_value(); });
    for (int i = 0; i < 3; ++i)
        pool->post([&busy, released, pool] {
            busy.count_down();
            released.wait();
        });
    busy.wait();
    EXPECT_EQ(due.get_future().wait_for(patience), std::future_status::ready);
    release.set_value();
}

TEST(WorkerPoolTest, ItsLastTaskMayReleaseIt) {
    for (int i = 0; i < 50; ++i) {
        auto pool = std::make_shared<WorkerPool>();
        const std::weak_ptr<WorkerPool> weak = pool;
        std::promise<void> go;
        pool->post([pool, released = go.get_future().share()] { released.wait(); });
        pool.reset();
        EXPECT_FALSE(weak.expired());
        go.set_value();
        const auto end = steady_clock::now() + patience;
        while (!weak.expired() && steady_clock::now() < end)
            std::this_thread::yield();
        EXPECT_TRUE(weak.expired());
    }
}

TEST(WorkerPoolTest, DropsWhatStillWaitsWhenItGoes) {
    auto witness = std::make_shared<bool>(false);
    const std::weak_ptr<bool> weak = witness;
    auto pool = std::make_shared<WorkerPool>();
    pool->postAt(steady_clock::now() + std::chrono::hours(1), [kept = std::move(witness)] { *kept = true; });
    pool.reset();
    EXPECT_TRUE(weak.expired());
}

TEST(WorkerPoolTest, WindingDownEndsDelaysAndWaitsForTheTasks) {
    const auto pool = std::make_shared<WorkerPool>();
    std::atomic<int> ran = 0;
    pool->postAt(steady_clock::now() + std::chrono::hours(1), [&, pool] { ++ran; });
    pool->windDown(patience);
    EXPECT_EQ(ran, 1);
    pool->postAt(steady_clock::now() + std::chrono::hours(1), [&, pool] { ++ran; });
    pool->windDown(patience);
    EXPECT_EQ(ran, 2);
}

TEST(WorkerPoolTest, WindingDownWaitsNoLongerThanItsLimit) {
    const auto pool = std::make_shared<WorkerPool>();
    std::promise<void> release;
    pool->post([released = release.get_future().share(), pool] { released.wait(); });
    const auto start = steady_clock::now();
    pool->windDown(milliseconds(20));
    EXPECT_LT(steady_clock::now() - start, patience);
    release.set_value();
    pool->windDown(patience);
}

TEST(WorkerPoolTest, WindingDownDoesNotWaitForItself) {
    const auto pool = std::make_shared<WorkerPool>();
    std::promise<void> done;
    pool->post([&, pool] {
        pool->windDown(std::chrono::hours(1));
        done.set_value();
    });
    EXPECT_EQ(done.get_future().wait_for(patience), std::future_status::ready);
}

/// Runs the work in a process of its own, in which threads can be made until `letThreadStartsFail`.
void expectInChild(const std::function<void()>& work) { EXPECT_EQ(runInChild(work), 0); }

/// Has a task hold the pool's one thread until the promise is kept.
void occupyUntil(std::promise<void>& release, const std::shared_ptr<WorkerPool>& pool) {
    std::promise<void> busy;
    pool->post([&busy, released = release.get_future().share(), pool] {
        busy.set_value();
        released.wait();
    });
    busy.get_future().wait();
}

constexpr const char* noThread = "80004005 pthread_create on the worker pool: Resource temporarily unavailable";

TEST(WorkerPoolTest, APoolForWhichNoThreadCanBeMadeIsAnErrorOfThePlatform) {
    expectInChild([] {
        ASSERT_TRUE(letThreadStartsFail());
        EXPECT_EQ(raisedBy([] { WorkerPool(); }), noThread);
    });
}

TEST(WorkerPoolTest, ATaskForWhichNoThreadCanBeMadeIsAnErrorOfThePlatformAndDoesNotRun) {
    expectInChild([] {
        const auto pool = std::make_shared<WorkerPool>();
        std::promise<void> release;
        occupyUntil(release, pool);
        ASSERT_TRUE(letThreadStartsFail());
        std::atomic<bool> ran = false;
        EXPECT_EQ(raisedBy([&] { pool->post([&ran, pool] { ran = true; }); }), noThread);
        EXPECT_EQ(raisedBy([&] { pool->postAt(steady_clock::now() + milliseconds(1), [&ran, pool] { ran = true; }); }),
                  noThread);
        release.set_value();
        pool->windDown(patience);
        EXPECT_FALSE(ran);
        std::promise<void> later; // on the thread that there is
        pool->post([&later, pool] { later.set_value(); });
        EXPECT_EQ(later.get_future().wait_for(patience), std::future_status::ready);
    });
}

TEST(WorkerPoolTest, ATaskThatWaitsForItsMomentDoesNotCountOnAThreadThatHasATaskAlready) {
    expectInChild([] {
        std::vector<std::shared_ptr<WorkerPool>> pools(500); // in some the thread has not begun its task yet
        for (auto& pool : pools)
            pool = std::make_shared<WorkerPool>();
        ASSERT_TRUE(letThreadStartsFail());
        std::promise<void> release;
        const auto released = release.get_future().share();
        std::size_t refused = 0;
        for (const auto& pool : pools) {
            pool->post([released, pool] { released.wait(); });
            const auto moment = steady_clock::now() + milliseconds(1);
            refused += raisedBy([&] { pool->postAt(moment, [pool] {}); }) == noThread ? 1 : 0;
        }
        release.set_value();
        EXPECT_EQ(refused, pools.size());
    });
}

TEST(WorkerPoolTest, ATaskThatCanWaitRunsOnAThreadThatComesFree) {
    expectInChild([] {
        const auto pool = std::make_shared<WorkerPool>();
        std::promise<void> release;
        occupyUntil(release, pool);
        ASSERT_TRUE(letThreadStartsFail());
        std::promise<void> ran;
        pool->postWhenFree([&ran, pool] { ran.set_value(); });
        release.set_value();
        EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
    });
}

TEST(WorkerPoolTest, ATaskThatCanWaitLeavesTheLastThreadToThoseThatWaitForTheirMoment) {
    expectInChild([] {
        const auto pool = std::make_shared<WorkerPool>();
        ASSERT_TRUE(letThreadStartsFail());
        std::promise<void> due;
        const auto wasDue = due.get_future().share();
        std::promise<bool> waited;
        pool->postAt(steady_clock::now() + milliseconds(20), [&due, pool] { due.set_value(); });
        // As the handler of an event that waits for an operation.
        pool->postWhenFree(
            [&waited, wasDue, pool] { waited.set_value(wasDue.wait_for(patience) == std::future_status::ready); });
        EXPECT_TRUE(waited.get_future().get());
    });
}

TEST(WorkerPoolTest, TasksThatComeDueTogetherShareAThreadWhereNoOtherCanBeMade) {
    expectInChild([] {
        const auto pool = std::make_shared<WorkerPool>();
        ASSERT_TRUE(letThreadStartsFail());
        std::latch all(10);
        const auto moment = steady_clock::now() + std::chrono::hours(1);
        for (int i = 0; i < 10; ++i)
            pool->postAt(moment, [&all, pool] { all.count_down(); });
        pool->windDown(patience); // the moment comes for all at once
        EXPECT_TRUE(all.try_wait());
    });
}

} // namespace
