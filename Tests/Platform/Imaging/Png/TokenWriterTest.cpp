#include "Platform/Imaging/Png/TokenWriter.h"

#include "Platform/Imaging/Png/BlockHeader.h"
#include "Platform/Imaging/Png/PrefixCode.h"
#include "Tests/Platform/Imaging/Png/InstructionSets.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

namespace Platform::Imaging::Png {
namespace {

constexpr int deflateAlone = -15;

/// Some zeros, at most tokenSlack, and then others.
Bytes withSlack(Bytes bytes, std::size_t zeros) {
    const std::size_t size = bytes.size();
    bytes.resize(size + zeros);
    bytes.resize(size + tokenSlack, 7);
    return bytes;
}

struct Block {
    std::array<std::uint32_t, tokenSymbols> counts{};
    Bytes deflated;
    std::size_t tokenBits = 0; // without header and end
};

/// The bytes in one block, of a code for what occurs in them.
Block blockOf(const Bytes& bytes, std::size_t zerosBehind = 0) {
    const Bytes readable = withSlack(bytes, zerosBehind);
    const std::span all(readable.data(), bytes.size());
    TokenCounts counts;
    countTokens(all, counts);
    Block block;
    block.counts = counts.total();
    ++block.counts[endOfBlock];
    const auto code = std::make_unique<TokenCode>();
    assignLengths(block.counts, longestWord, code->lengths);
    assignCodes(code->lengths, code->words);
    prepareTables(*code);
    block.deflated.resize(bytes.size() * longestWord / 8 + blockHeaderBound + BitWriter::slack);
    BitWriter writer(block.deflated.data());
    const auto bitsSoFar = [&] {
        return 8 * static_cast<std::size_t>(writer.end() - block.deflated.data()) + writer.pendingCount();
    };
    writeCodedHeader(code->lengths, true, writer);
    const std::size_t begin = bitsSoFar();
    writeTokens(all, *code, writer);
    block.tokenBits = bitsSoFar() - begin;
    writer.put(code->words[endOfBlock], code->lengths[endOfBlock]);
    writer.fillByte();
    block.deflated.resize(static_cast<std::size_t>(writer.end() - block.deflated.data()));
    return block;
}

std::uint32_t repetitions(const Block& block) {
    return std::accumulate(block.counts.begin() + endOfBlock + 1, block.counts.end(), 0U);
}

/// The bits that a code for these counts takes, and those behind the words of repetitions.
std::size_t bitsOf(const Block& block) {
    std::array<std::uint8_t, tokenSymbols> lengths{};
    assignLengths(block.counts, longestWord, lengths);
    std::size_t bits = 0;
    for (std::size_t length = 3; length <= longestRepetition; ++length) {
        const RepetitionSymbol repetition = repetitionSymbol(length);
        if (length == 3 || repetition.symbol != repetitionSymbol(length - 1).symbol)
            bits += std::size_t{block.counts[repetition.symbol]} * (repetition.extraCount + 1);
    }
    for (std::size_t symbol = 0; symbol < tokenSymbols; ++symbol)
        if (symbol != endOfBlock)
            bits += std::size_t{block.counts[symbol]} * lengths[symbol];
    return bits;
}

Bytes noise(std::size_t size, unsigned seed, unsigned limit = 255) {
    std::minstd_rand random(seed);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(1 + (random() >> 8) % limit);
    return bytes;
}

/// `before` bytes that are no zeros, a run, and `after` more.
Bytes withRun(std::size_t before, std::size_t run, std::size_t after) {
    Bytes bytes = noise(before + run + after, static_cast<unsigned>(before + run));
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(before), run, std::uint8_t{0});
    return bytes;
}

constexpr std::size_t runLengths[] = {1,   2,   6,   7,   8,   9,   10,  11,  63,  64,  65,  66,  257, 258,
                                      259, 260, 261, 262, 263, 515, 516, 517, 518, 519, 520, 521, 1000};

TEST(TokenWriterTest, RunsOfAnyLengthAreReadWhereverTheyBegin) {
    withEachInstructionSet([](const char* name) {
        for (const std::size_t before : {0, 1, 7, 8, 31, 32, 40, 55, 56, 57, 58, 59, 60, 61, 62, 63, 64, 65}) {
            for (const std::size_t run : runLengths) {
                const Bytes bytes = withRun(before, run, 3);
                EXPECT_TRUE(inflated(blockOf(bytes).deflated, deflateAlone) == bytes)
                    << name << ", " << run << " zeros behind " << before;
            }
        }
    });
}

TEST(TokenWriterTest, RunsFromEightOnAreRepetitions) {
    for (std::size_t run = 1; run < 8; ++run)
        EXPECT_EQ(repetitions(blockOf(withRun(5, run, 5))), 0U) << run;
    for (const std::size_t run : {8, 9, 200, 258, 259})
        EXPECT_EQ(repetitions(blockOf(withRun(5, run, 5))), 1U) << run;
    for (const std::size_t run : {260, 261, 262, 263, 516, 517})
        EXPECT_EQ(repetitions(blockOf(withRun(5, run, 5))), 2U) << run;
    for (const std::size_t run : {518, 519, 520})
        EXPECT_EQ(repetitions(blockOf(withRun(5, run, 5))), 3U) << run;
}

TEST(TokenWriterTest, WhatLiesBehindTheBytesIsNoPartOfARun) {
    for (std::size_t run = 1; run <= 130; ++run) {
        const Bytes bytes = withRun(3, run, 0);
        for (const std::size_t zerosBehind : {0, 1, 10, 40, 64})
            EXPECT_TRUE(inflated(blockOf(bytes, zerosBehind).deflated, deflateAlone) == bytes)
                << run << " zeros, behind them " << zerosBehind;
    }
}

TEST(TokenWriterTest, LiteralsOfAnyNumberAreReadWithAnyCode) {
    withEachInstructionSet([](const char* name) {
        for (const unsigned limit : {1U, 2U, 16U, 255U}) {
            for (std::size_t size = 1; size <= 200; ++size) {
                const Bytes bytes = noise(size, limit, limit);
                EXPECT_TRUE(inflated(blockOf(bytes).deflated, deflateAlone) == bytes)
                    << name << ", " << size << " of " << limit << " kinds";
            }
        }
    });
}

TEST(TokenWriterTest, TheLongestWordsAreReadOneBehindTheOther) {
    Bytes bytes = noise(100, 1, 200);
    for (const Bytes& part : {Bytes(400'000, 201), noise(5000, 2, 200)}) // those of the second part are rare
        bytes.insert(bytes.end(), part.begin(), part.end());
    withEachInstructionSet(
        [&bytes](const char* name) { EXPECT_TRUE(inflated(blockOf(bytes).deflated, deflateAlone) == bytes) << name; });
}

TEST(TokenWriterTest, WhatIsCountedIsWhatIsWritten) {
    withEachInstructionSet([](const char* name) {
        Bytes bytes;
        for (const std::size_t run : runLengths) {
            const Bytes next = withRun(run % 71, run, 1);
            bytes.insert(bytes.end(), next.begin(), next.end());
            const Block block = blockOf(bytes);
            EXPECT_EQ(block.tokenBits, bitsOf(block)) << name << ", " << run;
        }
    });
}

TEST(TokenWriterTest, EveryInstructionSetWritesTheSame) {
    Bytes bytes = noise(1000, 3);
    for (const std::size_t run : runLengths) {
        const Bytes next = withRun(run % 67, run, 1);
        bytes.insert(bytes.end(), next.begin(), next.end());
    }
    const Bytes expected = blockOf(bytes).deflated;
    withEachInstructionSet([&](const char* name) { EXPECT_TRUE(blockOf(bytes).deflated == expected) << name; });
}

} // namespace
} // namespace Platform::Imaging::Png
