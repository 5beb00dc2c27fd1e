#include "Platform/Interface/AsyncOperation.h"

#include "Platform/Interface/AsyncWait.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

using namespace Platform;

namespace {

const winrt::hresult_error someError(winrt::result::busy, u"busy");

TEST(AsyncOperationTest, GivesItsResult) {
    const AsyncOperationSource<std::string> source;
    const auto operation = source.operation();
    EXPECT_EQ(operation.Status(), AsyncStatus::Started);
    source.complete("done");
    EXPECT_EQ(operation.Status(), AsyncStatus::Completed);
    EXPECT_EQ(operation.GetResults(), "done");
}

TEST(AsyncOperationTest, RaisesItsError) {
    const AsyncOperationSource<void> source;
    source.fail(someError);
    EXPECT_EQ(source.operation().Status(), AsyncStatus::Error);
    try {
        source.operation().GetResults();
        FAIL() << "nothing was raised";
    } catch (const winrt::hresult_error& error) {
        EXPECT_EQ(error.code(), winrt::result::busy);
        EXPECT_EQ(error.message(), u"busy");
    }
}

TEST(AsyncOperationTest, HasNoResultsWhileItIsUnderWay) {
    const AsyncOperationSource<int> source;
    EXPECT_THROW(source.operation().GetResults(), winrt::hresult_error);
}

TEST(AsyncOperationTest, RunsTheHandlerWhenItEnds) {
    const AsyncOperationSource<int> source;
    AsyncStatus seen = AsyncStatus::Started;
    source.operation().Completed([&](const auto&, AsyncStatus status) { seen = status; });
    EXPECT_EQ(seen, AsyncStatus::Started);
    source.fail(someError);
    EXPECT_EQ(seen, AsyncStatus::Error);
}

TEST(AsyncOperationTest, RunsTheHandlerAtOnceIfItHasEnded) {
    const AsyncOperationSource<int> source;
    source.complete(3);
    int seen = 0;
    source.operation().Completed(
        [&](const IAsyncOperation<int>& operation, AsyncStatus) { seen = operation.GetResults(); });
    EXPECT_EQ(seen, 3);
}

TEST(AsyncOperationTest, TakesOneHandlerOnly) {
    const AsyncOperationSource<int> source;
    source.operation().Completed([](const auto&, AsyncStatus) {});
    EXPECT_THROW(source.operation().Completed([](const auto&, AsyncStatus) {}), winrt::hresult_error);
    source.complete(1);
    EXPECT_THROW(source.operation().Completed([](const auto&, AsyncStatus) {}), winrt::hresult_error);
}

TEST(AsyncOperationTest, EndsOnce) {
    const AsyncOperationSource<int> source;
    int runs = 0;
    source.operation().Completed([&](const auto&, AsyncStatus) { ++runs; });
    source.complete(1);
    source.complete(2);
    source.fail(someError);
    EXPECT_EQ(source.operation().GetResults(), 1);
    EXPECT_EQ(runs, 1);
}

TEST(AsyncOperationTest, NeverEndsWhenItsSourceGoesAway) {
    auto source = std::make_unique<AsyncOperationSource<int>>();
    const auto operation = source->operation();
    bool ran = false;
    operation.Completed([&](const auto&, AsyncStatus) { ran = true; });
    source.reset();
    EXPECT_FALSE(ran);
    EXPECT_EQ(operation.Status(), AsyncStatus::Started);
}

TEST(AsyncWaitTest, BlocksUntilAnotherThreadEndsTheOperation) {
    const AsyncOperationSource<int> source;
    const std::jthread later([source] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        source.complete(7);
    });
    EXPECT_EQ(blockingWait(source.operation()), 7);
}

TEST(AsyncWaitTest, RaisesTheErrorOfTheOperation) {
    const AsyncOperationSource<void> source;
    source.fail(someError);
    EXPECT_THROW(blockingWait(source.operation()), winrt::hresult_error);
}

TEST(AsyncWaitTest, WaitsNoLongerThanToTheMomentGiven) {
    const AsyncOperationSource<void> source;
    const auto flag = CompletionFlag::of(source.operation());
    EXPECT_FALSE(flag->waitUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(10)));
    source.complete();
    EXPECT_TRUE(flag->waitUntil(std::chrono::steady_clock::now()));
}

TEST(AsyncWaitTest, AnOperationThatEndsAfterItsWaiterFindsTheFlag) {
    const AsyncOperationSource<void> source;
    std::weak_ptr<CompletionFlag> flag;
    {
        const auto shared = CompletionFlag::of(source.operation());
        flag = shared;
        EXPECT_FALSE(shared->waitUntil(std::chrono::steady_clock::now()));
    }
    EXPECT_FALSE(flag.expired());
    source.complete();
    EXPECT_TRUE(flag.expired());
}

TEST(AsyncOperationTest, MayBeWaitedForAndEndedOnManyThreads) {
    for (int i = 0; i < 200; ++i) {
        const AsyncOperationSource<int> source;
        std::atomic<int> sum = 0;
        const auto waiter = std::async(std::launch::async, [&] { sum += blockingWait(source.operation()); });
        const std::jthread ender([&] { source.complete(i); });
        waiter.wait();
        EXPECT_EQ(sum, i);
    }
}

} // namespace
