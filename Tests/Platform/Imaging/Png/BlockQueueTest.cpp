#include "Platform/Imaging/Png/BlockQueue.h"

#include "Tests/Platform/Imaging/Png/ThreadBeside.h"
#include "Tests/Support/FailingLargeAllocations.h"
#include "Tests/Support/ReplacedAllocation.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <optional>
#include <utility>

namespace Platform::Imaging::Png {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t blockSize = 3000;
// Less than a coder's tables take, and more than anything that it needs for a block of that size.
constexpr std::size_t coderSize = 100'000;

Bytes bytesOf(std::size_t number) {
    Bytes bytes(blockSize - number);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * number % 50);
    return bytes;
}

Bytes codedAlone(std::size_t number) {
    Bytes bytes = bytesOf(number);
    bytes.resize(bytes.size() + BlockCoder::slack);
    BlockCoder coder;
    CodedBlock coded;
    coder.code({bytes.data(), bytes.size() - BlockCoder::slack}, {}, coded);
    return Bytes(coded.bytes().begin(), coded.bytes().end());
}

void put(BlockQueue& queue, std::size_t number) {
    const Bytes bytes = bytesOf(number);
    Block& block = queue.next();
    std::ranges::copy(bytes, block.bytes.begin());
    block.size = bytes.size();
    queue.put();
}

void expectNext(BlockQueue& queue, std::size_t number) {
    const Block& block = queue.oldest();
    EXPECT_TRUE(std::ranges::equal(block.coded.bytes(), codedAlone(number))) << number;
    queue.take();
}

void expectThatBlocksComeInOrder(BlockQueue& queue) {
    std::size_t taken = 0;
    for (std::size_t number = 0; number < 50; ++number) {
        put(queue, number);
        if (queue.isFull())
            expectNext(queue, taken++);
    }
    while (!queue.isEmpty())
        expectNext(queue, taken++);
    EXPECT_EQ(taken, 50U);
}

TEST(BlockQueueTest, BlocksComeInOrderWithOneThread) {
    BlockQueue queue(blockSize, {});
    expectThatBlocksComeInOrder(queue);
}

TEST(BlockQueueTest, BlocksComeInOrderWithTwoThreads) {
    ThreadBeside beside;
    BlockQueue queue(blockSize, beside.run());
    expectThatBlocksComeInOrder(queue);
}

TEST(BlockQueueTest, BlocksComeInOrderWhereTheOtherThreadNeverComes) {
    BlockQueue queue(blockSize, [](const std::function<void()>&) {});
    expectThatBlocksComeInOrder(queue);
}

TEST(BlockQueueTest, AThreadThatComesWhenTheQueueHasGoneFindsNothingToDo) {
    std::function<void()> late;
    std::optional<BlockQueue> queue(std::in_place, blockSize, [&](std::function<void()> work) { late = work; });
    put(*queue, 1);
    queue.reset();
    late(); // ends
}

TEST(BlockQueueTest, AQueueWithBlocksLeftEnds) {
    for (std::size_t blocks = 0; blocks < 4; ++blocks) {
        ThreadBeside beside;
        BlockQueue queue(blockSize, beside.run());
        for (std::size_t number = 0; number < blocks; ++number)
            put(queue, number);
    }
}

TEST(BlockQueueTest, HandsItsToolsOutForTheNextOne) {
    ThreadBeside beside;
    BlockQueue first(blockSize, beside.run());
    expectThatBlocksComeInOrder(first);
    auto tools = first.close();
    ASSERT_NE(tools, nullptr);
    const BlockTools* kept = tools.get();
    EXPECT_EQ(first.close(), nullptr);

    ThreadBeside otherBeside;
    BlockQueue second(blockSize, otherBeside.run(), std::move(tools));
    expectThatBlocksComeInOrder(second);
    EXPECT_EQ(second.close().get(), kept);
}

TEST(BlockQueueTest, TheToolsOfALargerQueueServeASmallerOne) {
    BlockQueue larger(blockSize, [](const std::function<void()>&) {});
    expectThatBlocksComeInOrder(larger);
    BlockQueue smaller(blockSize, {}, larger.close());
    put(smaller, 3);
    EXPECT_TRUE(smaller.isFull());
    expectNext(smaller, 3);
}

std::atomic<bool> hasBegun;
std::atomic<bool> isRefused;
thread_local bool isFirst = false;

/// The other thread's first allocation for a block tells that it codes one; it fails if it is to.
class WatchedThread {
public:
    explicit WatchedThread(bool refused) {
        isFirst = true;
        hasBegun = false;
        isRefused = refused;
        allowAllocationsBy([](std::size_t size) {
            if (isFirst || size >= coderSize)
                return true;
            hasBegun = true;
            return !isRefused;
        });
    }
    ~WatchedThread() {
        allowAllocationsBy(nullptr);
        isFirst = false;
    }
    WatchedThread(const WatchedThread&) = delete;
    WatchedThread& operator=(const WatchedThread&) = delete;
};

TEST(BlockQueueTest, TheOtherThreadCodesWhatHasBeenPut) {
    const WatchedThread watched(false);
    ThreadBeside beside;
    BlockQueue queue(blockSize, beside.run());
    put(queue, 7);
    EXPECT_TRUE(waitUntil([] { return hasBegun.load(); }));
    expectNext(queue, 7);
}

TEST(BlockQueueTest, WhatTheOtherThreadHasNoMemoryForFails) {
    const WatchedThread watched(true);
    ThreadBeside beside;
    BlockQueue queue(blockSize, beside.run());
    put(queue, 7);
    EXPECT_TRUE(waitUntil([] { return hasBegun.load(); }));
    EXPECT_THROW(queue.oldest(), std::bad_alloc);
}

TEST(BlockQueueTest, AThreadThatHasNoMemoryForACoderLeavesAllToTheFirst) {
    const FailingLargeAllocations failing(coderSize);
    ThreadBeside beside;
    BlockQueue queue(blockSize, beside.run());
    beside.join();
    expectThatBlocksComeInOrder(queue);
}

} // namespace
} // namespace Platform::Imaging::Png
