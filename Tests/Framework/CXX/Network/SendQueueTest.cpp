#include "Framework/CXX/Network/SendQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

constexpr std::size_t noLimit = static_cast<std::size_t>(-1);

SharedBytes shared(const std::string& text) {
    return std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end());
}

/// What is at the front, its parts apart.
std::vector<std::string> front(const SendQueue& queue, std::size_t limit = noLimit, std::size_t mostParts = 8) {
    std::array<iovec, 8> parts{};
    std::vector<std::string> texts;
    const std::size_t count = queue.front({parts.data(), mostParts}, limit);
    for (std::size_t i = 0; i < count; ++i)
        texts.emplace_back(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(SendQueueTest, KeepsTextsAndSharedBytesInTheirOrderAndTextsTogether) {
    SendQueue queue;
    queue.append("head");
    queue.append("er");
    queue.append(shared("image"));
    queue.append("next");
    EXPECT_EQ(front(queue), (Texts{"header", "image", "next"}));
    EXPECT_EQ(queue.size(), 15U);
}

TEST(SendQueueTest, SharedBytesAreNotCopiedAndTextsAre) {
    SendQueue queue;
    std::string text = "text";
    const SharedBytes bytes = shared("image");
    queue.append(text);
    queue.append(bytes);
    text = "gone";
    std::array<iovec, 2> parts{};
    ASSERT_EQ(queue.front(parts, noLimit), 2U);
    EXPECT_EQ(std::string(static_cast<const char*>(parts[0].iov_base), 4), "text");
    EXPECT_EQ(parts[1].iov_base, bytes->data());
}

TEST(SendQueueTest, TheFrontEndsAtTheLimitAndWhereThereAreNoPartsLeft) {
    SendQueue queue;
    queue.append("text");
    queue.append(shared("image"));
    EXPECT_EQ(front(queue, 0), Texts{});
    EXPECT_EQ(front(queue, 3), Texts{"tex"});
    EXPECT_EQ(front(queue, 4), Texts{"text"});
    EXPECT_EQ(front(queue, 5), (Texts{"text", "i"}));
    EXPECT_EQ(front(queue, noLimit, 1), Texts{"text"});
    EXPECT_EQ(front(queue, noLimit, 0), Texts{});
}

TEST(SendQueueTest, WhatIsTakenGoesFromTheFrontAcrossParts) {
    SendQueue queue;
    queue.append("text");
    queue.append(shared("image"));
    queue.append("end");
    queue.take(0);
    queue.take(2);
    EXPECT_EQ(front(queue), (Texts{"xt", "image", "end"}));
    queue.take(3);
    EXPECT_EQ(front(queue), (Texts{"mage", "end"}));
    EXPECT_EQ(queue.size(), 7U);
    queue.take(7);
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.size(), 0U);
    queue.append("more");
    EXPECT_EQ(front(queue), Texts{"more"});
}

TEST(SendQueueTest, AShareIsLetGoOfWithItsLastByte) {
    SendQueue queue;
    const SharedBytes bytes = shared("image");
    queue.append(bytes);
    queue.append(bytes);
    EXPECT_EQ(bytes.use_count(), 3);
    queue.take(4);
    EXPECT_EQ(bytes.use_count(), 3);
    queue.take(1);
    EXPECT_EQ(bytes.use_count(), 2);
    queue = {};
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST(SendQueueTest, NothingAddsNothing) {
    SendQueue queue;
    queue.append("");
    queue.append(shared(""));
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(front(queue), Texts{});
}

TEST(SendQueueTest, TextThatIsNeverSentWholeIsLetGoOfInPieces) {
    const std::string text(1000, 'x');
    SendQueue queue;
    std::size_t mostParts = 0;
    for (int i = 0; i < 1000; ++i) {
        queue.append(text);
        if (queue.size() > 500'000)
            queue.take(text.size());
        mostParts = std::max(mostParts, front(queue).size());
    }
    // What was sent is still there in the first part alone.
    EXPECT_EQ(mostParts, 8U);
    EXPECT_LT(front(queue).front().size(), 70'000U);
}

} // namespace
