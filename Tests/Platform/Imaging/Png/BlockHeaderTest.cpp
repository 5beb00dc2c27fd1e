#include "Platform/Imaging/Png/BlockHeader.h"

#include "Platform/Imaging/Png/PrefixCode.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <gtest/gtest.h>

#include <random>

namespace Platform::Imaging::Png {
namespace {

using Counts = std::array<std::uint32_t, tokenSymbols>;

constexpr int deflateAlone = -15;

struct HeaderAndBytes {
    std::size_t headerSize = 0;
    Bytes decoded;
};

/// A block of a code for these counts, with all bytes in it that have a word, by zlib.
HeaderAndBytes throughZlib(Counts counts, Bytes* written) {
    counts[endOfBlock] = 1;
    std::array<std::uint8_t, tokenSymbols> lengths{};
    std::array<std::uint16_t, tokenSymbols> words{};
    assignLengths(counts, 15, lengths);
    assignCodes(lengths, words);
    Bytes out(blockHeaderBound + 600);
    BitWriter writer(out.data());
    writeCodedHeader(lengths, true, writer);
    const auto headerSize = static_cast<std::size_t>(writer.end() - out.data()) + 1;
    for (std::size_t byte = 0; byte < 256; ++byte) {
        if (lengths[byte] > 0) {
            writer.put(words[byte], lengths[byte]);
            written->push_back(static_cast<std::uint8_t>(byte));
        }
    }
    writer.put(words[endOfBlock], lengths[endOfBlock]);
    writer.fillByte();
    out.resize(static_cast<std::size_t>(writer.end() - out.data()));
    return {headerSize, inflated(out, deflateAlone)};
}

TEST(BlockHeaderTest, ItsCodeIsReadByZlibWhicheverSymbolsOccur) {
    std::minstd_rand random(1);
    for (int tries = 0; tries < 500; ++tries) {
        Counts counts{};
        const unsigned oneIn = 1 + tries % 40; // from all symbols to few, and so to gaps of any length
        for (std::uint32_t& count : counts)
            count = random() % oneIn == 0 ? 1 + random() % (1U << tries % 16) : 0;
        Bytes written;
        const HeaderAndBytes block = throughZlib(counts, &written);
        EXPECT_EQ(block.decoded, written) << tries;
        EXPECT_LE(block.headerSize, blockHeaderBound) << tries;
    }
}

TEST(BlockHeaderTest, ACodeOfNothingButTheEndIsRead) {
    Bytes written;
    EXPECT_TRUE(throughZlib({}, &written).decoded == written);
}

TEST(BlockHeaderTest, GapsOfAnyLengthAreRead) {
    for (std::size_t gap = 0; gap < 255; ++gap) {
        Counts counts{};
        counts[0] = 5;
        counts[gap + 1] = 5;
        Bytes written;
        EXPECT_EQ(throughZlib(counts, &written).decoded, written) << gap;
        EXPECT_EQ(written.size(), 2U) << gap;
    }
}

TEST(BlockHeaderTest, AStoredBlockBeginsAtAByteWhereverTheLastOneEnded) {
    for (unsigned blocksBefore = 0; blocksBefore < 8; ++blocksBefore) {
        for (const std::size_t size : {std::size_t{0}, std::size_t{1}, storedBlockSize}) {
            const Bytes bytes(size, 0x5A);
            Bytes out(64);
            BitWriter writer(out.data());
            for (unsigned block = 0; block < blocksBefore; ++block)
                writer.put(0b0000000'01'0, 10); // an empty block of the standard's own code: ten bits
            writeStoredHeader(size, true, writer);
            EXPECT_EQ(writer.pendingCount(), 0U);
            out.resize(static_cast<std::size_t>(writer.end() - out.data()));
            out.insert(out.end(), bytes.begin(), bytes.end());
            EXPECT_TRUE(inflated(out, deflateAlone) == bytes) << size << " bytes";
        }
    }
}

} // namespace
} // namespace Platform::Imaging::Png
