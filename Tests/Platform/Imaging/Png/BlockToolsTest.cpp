#include "Platform/Imaging/Png/BlockTools.h"

#include <gtest/gtest.h>

#include <utility>

namespace Platform::Imaging::Png {
namespace {

constexpr std::size_t usualRoom = 300'000;

std::unique_ptr<BlockTools> preparedTools(std::size_t count, std::size_t room) {
    auto tools = std::make_unique<BlockTools>();
    tools->prepare(count, room);
    return tools;
}

/// What is kept when the test ends is new: others in this process find no large blocks.
class BlockToolsTest : public testing::Test {
protected:
    BlockToolsTest() { takeTools(); }
    ~BlockToolsTest() override { takeTools(); }
};

TEST_F(BlockToolsTest, AreTakenAgainWhenTheyAreKept) {
    auto tools = preparedTools(4, usualRoom);
    const BlockTools* kept = tools.get();
    keepTools(std::move(tools));
    EXPECT_EQ(takeTools().get(), kept);
}

TEST_F(BlockToolsTest, AreNewWhileTheKeptOnesAreInUse) {
    keepTools(preparedTools(4, usualRoom));
    const auto inUse = takeTools();
    const auto others = takeTools();
    ASSERT_NE(others, nullptr);
    EXPECT_TRUE(others->blocks.empty());
}

TEST_F(BlockToolsTest, AreKeptOnce) {
    auto first = preparedTools(4, usualRoom);
    const BlockTools* kept = first.get();
    keepTools(std::move(first));
    keepTools(preparedTools(4, usualRoom));
    EXPECT_EQ(takeTools().get(), kept);
    EXPECT_TRUE(takeTools()->blocks.empty());
}

TEST_F(BlockToolsTest, OfVeryWidePicturesAreFreed) {
    keepTools(preparedTools(1, 2'000'000));
    EXPECT_TRUE(takeTools()->blocks.empty());
}

TEST_F(BlockToolsTest, HaveEnoughEmptyBlocksForEachPicture) {
    auto tools = preparedTools(1, 1000);
    tools->blocks[0].size = 700;
    tools->blocks[0].place = {.first = true, .last = true};
    tools->prepare(4, 2000);
    ASSERT_EQ(tools->blocks.size(), 4U);
    for (const Block& block : tools->blocks) {
        EXPECT_GE(block.bytes.size(), 2000 + BlockCoder::slack);
        EXPECT_EQ(block.size, 0U);
        EXPECT_FALSE(block.place.first || block.place.last);
    }
    const std::uint8_t* bytes = tools->blocks[3].bytes.data();
    tools->prepare(2, 500);
    EXPECT_EQ(tools->blocks[3].bytes.data(), bytes); // what a smaller picture does not need stays
}

} // namespace
} // namespace Platform::Imaging::Png
