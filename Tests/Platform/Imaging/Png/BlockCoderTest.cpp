#include "Platform/Imaging/Png/BlockCoder.h"

#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

namespace Platform::Imaging::Png {
namespace {

Bytes joined(const std::vector<Bytes>& blocks) {
    Bytes all;
    for (const Bytes& block : blocks)
        all.insert(all.end(), block.begin(), block.end());
    return all;
}

/// The coder of each block has coded others before.
Bytes streamOf(const std::vector<Bytes>& blocks) {
    BlockCoder coder;
    CodedBlock coded;
    Bytes out;
    for (const Bytes& block : blocks) {
        Bytes readable = block;
        readable.resize(block.size() + BlockCoder::slack, 0);
        coder.code({readable.data(), block.size()}, {&block == &blocks.front(), &block == &blocks.back()}, coded);
        EXPECT_EQ(coded.adler, adler32_z(1, block.data(), block.size()));
        out.insert(out.end(), coded.bytes().begin(), coded.bytes().end());
    }
    const Bytes all = joined(blocks);
    const auto check = static_cast<std::uint32_t>(adler32_z(1, all.data(), all.size()));
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(check >> shift));
    return out;
}

Bytes noise(std::size_t size, unsigned limit = 256) {
    std::minstd_rand random(static_cast<unsigned>(size) + limit);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>((random() >> 8) % limit);
    return bytes;
}

TEST(BlockCoderTest, BlocksOfAnySizeAreRead) {
    for (const std::size_t size : {1, 2, 3, 100, 4095, 4096, 4097, 16383, 16384, 16385, 65535, 65536, 300000})
        for (const unsigned limit : {1, 3, 40, 256})
            EXPECT_TRUE(inflated(streamOf({noise(size, limit)})) == noise(size, limit)) << size << ", " << limit;
}

TEST(BlockCoderTest, BlocksOfAllKindsFollowEachOther) {
    std::vector<Bytes> blocks;
    for (const std::size_t size : {1000, 100000, 5, 20000})
        for (const unsigned limit : {256, 5, 1, 256, 256, 30})
            blocks.push_back(noise(size + limit, limit));
    EXPECT_TRUE(inflated(streamOf(blocks)) == joined(blocks));
}

TEST(BlockCoderTest, WhatTheSampleHasNotIsReadAsWell) {
    Bytes bytes(40000, 1);
    for (std::size_t i = 0; i < 256; ++i) // between two pieces of the sample
        bytes[10000 + 3 * i] = static_cast<std::uint8_t>(i);
    std::fill_n(bytes.begin() + 25000, 1000, std::uint8_t{0}); // a run, too
    EXPECT_TRUE(inflated(streamOf({bytes})) == bytes);
}

TEST(BlockCoderTest, WhatCannotBeCompressedIsStored) {
    for (const std::size_t size : {1, 100, 65535, 65536, 300000}) {
        const Bytes stream = streamOf({noise(size)});
        EXPECT_TRUE(inflated(stream) == noise(size)) << size;
        const std::size_t blocks = 1 + (size - 1) / 65535;
        EXPECT_LE(stream.size(), 2 + size + 5 * blocks + 4) << size;
    }
}

TEST(BlockCoderTest, AWrongSampleCostsNoMoreThanStoring) {
    Bytes bytes = noise(256 * 1024);
    for (std::size_t at = 0; at < bytes.size(); at += 16384) // all that is counted
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 4096, std::uint8_t{7});
    const Bytes stream = streamOf({bytes});
    EXPECT_TRUE(inflated(stream) == bytes);
    EXPECT_LE(stream.size(), bytes.size() + 40);
}

TEST(BlockCoderTest, WhereRunsLeaveLittleAllOfItIsCounted) {
    Bytes bytes(256 * 1024);
    for (std::size_t at = 8000; at < bytes.size(); at += 16384) // between the pieces of the sample
        for (std::size_t i = 0; i < 4000; ++i)
            bytes[at + i] = static_cast<std::uint8_t>(1 + i % 2);
    const Bytes stream = streamOf({bytes});
    EXPECT_TRUE(inflated(stream) == bytes);
    EXPECT_LE(stream.size(), std::size_t{16} * 4000 * 2 / 8 + 500); // of two symbols, at most two bits each
}

TEST(BlockCoderTest, EveryBlockHasACodeOfItsOwn) {
    const std::vector<Bytes> blocks{Bytes(20000, 1), Bytes(20000, 2), Bytes(20000, 3), Bytes(20000, 4)};
    EXPECT_LE(streamOf(blocks).size(), std::size_t{80000} / 8 + 4 * 100); // one bit each
    EXPECT_TRUE(inflated(streamOf(blocks)) == joined(blocks));
}

} // namespace
} // namespace Platform::Imaging::Png
