#include "Platform/Shared/RunBeside.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace Platform::Shared {
namespace {

bool hasOneProcessor() { return std::thread::hardware_concurrency() == 1; }

TEST(RunBesideTest, WorkRunsOnAnotherThread) {
    const auto run = runBeside(std::make_shared<WorkerPool>());
    if (hasOneProcessor())
        GTEST_SKIP() << "nothing runs beside on one processor";
    std::promise<std::thread::id> ran;
    run([&ran] { ran.set_value(std::this_thread::get_id()); });
    EXPECT_NE(ran.get_future().get(), std::this_thread::get_id());
}

TEST(RunBesideTest, WorkForWhichThereIsNoThreadIsLeftAlone) {
    if (hasOneProcessor())
        GTEST_SKIP() << "nothing runs beside on one processor";
    EXPECT_EQ(runInChild([] {
                  const auto pool = std::make_shared<WorkerPool>();
                  ASSERT_TRUE(letThreadStartsFail());
                  std::promise<void> held;
                  std::promise<void> began;
                  pool->post([&] { // the one thread that there is
                      began.set_value();
                      held.get_future().wait();
                  });
                  began.get_future().wait();
                  bool ran = false;
                  runBeside(pool)([&ran] { ran = true; });
                  held.set_value();
                  pool->windDown(std::chrono::seconds(10));
                  EXPECT_FALSE(ran);
              }),
              0);
}

} // namespace
} // namespace Platform::Shared
