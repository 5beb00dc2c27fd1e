#include "Services/CameraHubWeb/Api/Workers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <new>
#include <string>

namespace CameraHubWeb {
namespace {

TEST(WorkersTest, OneThreadDoesItsTasksInTheirOrder) {
    Workers workers(1);
    std::string order;
    std::promise<void> ended;
    for (const char letter : {'a', 'b', 'c'})
        workers.post([&order, letter] { order += letter; });
    workers.post([&] { ended.set_value(); });
    ended.get_future().wait();
    EXPECT_EQ(order, "abc");
}

TEST(WorkersTest, TwoThreadsDoTwoTasksAtOnce) {
    Workers workers(2);
    std::promise<void> first;
    std::promise<void> second;
    std::promise<void> both;
    workers.post([&] {
        first.set_value();
        second.get_future().wait();
        both.set_value();
    });
    workers.post([&] {
        first.get_future().wait();
        second.set_value();
    });
    both.get_future().wait();
}

TEST(WorkersTest, ATaskThatFailsCostsNoThread) {
    Workers workers(1);
    std::promise<void> ended;
    workers.post([] { throw std::bad_alloc(); });
    workers.post([&] { ended.set_value(); });
    ended.get_future().wait();
}

TEST(WorkersTest, TheEndWaitsForWhatIsBeingDone) {
    std::promise<void> begun;
    std::promise<void> gate;
    bool isDone = false;
    auto workers = std::make_unique<Workers>(1);
    workers->post([&] {
        begun.set_value();
        gate.get_future().wait();
        isDone = true;
    });
    begun.get_future().wait();
    const std::future<void> end = std::async(std::launch::async, [&workers] { workers.reset(); });
    EXPECT_EQ(end.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    gate.set_value();
    end.wait();
    EXPECT_TRUE(isDone);
}

} // namespace
} // namespace CameraHubWeb
