#include "Platform/Imaging/Png/PrefixCode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>
#include <random>
#include <vector>

namespace Platform::Imaging::Png {
namespace {

using Counts = std::vector<std::uint32_t>;
using Lengths = std::vector<std::uint8_t>;
using testing::ElementsAre;

Lengths lengthsOf(const Counts& counts, unsigned longest) {
    Lengths lengths(counts.size(), 0xFF);
    assignLengths(counts, longest, lengths);
    return lengths;
}

/// The words' share of all words of 15 bits: 2^15 where the code is complete.
std::uint64_t kraftSum(const Lengths& lengths) {
    std::uint64_t sum = 0;
    for (const std::uint8_t length : lengths)
        if (length > 0)
            sum += std::uint64_t{1} << (15 - length);
    return sum;
}

std::uint64_t bitsOf(const Counts& counts, const Lengths& lengths) {
    return std::inner_product(counts.begin(), counts.end(), lengths.begin(), std::uint64_t{0});
}

/// What the best code of all takes: each joining of the two lightest makes all in them a bit longer.
std::uint64_t fewestBits(const Counts& counts) {
    std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> weights;
    for (const std::uint32_t count : counts)
        if (count > 0)
            weights.push(count);
    std::uint64_t bits = 0;
    while (weights.size() > 1) {
        std::uint64_t joined = weights.top();
        weights.pop();
        joined += weights.top();
        weights.pop();
        bits += joined;
        weights.push(joined);
    }
    return bits;
}

/// Of every kind from even to steep, some symbols absent.
Counts someCounts(std::size_t size, unsigned seed) {
    std::minstd_rand random(seed);
    Counts counts(size);
    for (std::uint32_t& count : counts)
        count = random() % 4 == 0 ? 0 : 1 + static_cast<std::uint32_t>(random() >> 8) % (1U << seed % 20);
    return counts;
}

Counts fibonacciCounts(std::size_t size) {
    Counts counts(size, 1);
    for (std::size_t i = 2; i < size; ++i)
        counts[i] = counts[i - 1] + counts[i - 2];
    return counts;
}

TEST(PrefixCodeTest, EveryCodeIsCompleteAndWithinItsLimit) {
    for (const unsigned longest : {9U, 12U, 15U}) {
        for (unsigned seed = 1; seed <= 200; ++seed) {
            const Counts counts = someCounts(2 + seed * 37 % 285, seed);
            const Lengths lengths = lengthsOf(counts, longest);
            EXPECT_EQ(kraftSum(lengths), 1U << 15) << seed;
            EXPECT_LE(*std::ranges::max_element(lengths), longest) << seed;
        }
    }
}

TEST(PrefixCodeTest, WhatOccursHasAWordAndNothingElse) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        const Counts counts = someCounts(100, seed);
        const Lengths lengths = lengthsOf(counts, 12);
        for (std::size_t i = 0; i < counts.size(); ++i)
            EXPECT_EQ(lengths[i] > 0, counts[i] > 0) << seed << ", symbol " << i;
    }
}

TEST(PrefixCodeTest, NoCodeIsShorterWhereNoWordIsTooLong) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        Counts counts = someCounts(286, seed);
        for (std::uint32_t& count : counts)
            count = std::min(count, 200U); // too even for a long word
        EXPECT_EQ(bitsOf(counts, lengthsOf(counts, 15)), fewestBits(counts)) << seed;
    }
}

TEST(PrefixCodeTest, TheMoreFrequentNeverHasTheLongerWord) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const Counts counts = someCounts(40, seed);
        const Lengths lengths = lengthsOf(counts, 7);
        for (std::size_t i = 0; i < counts.size(); ++i)
            for (std::size_t j = 0; j < counts.size(); ++j)
                EXPECT_TRUE(counts[i] <= counts[j] || counts[j] == 0 || lengths[i] <= lengths[j])
                    << seed << ", symbols " << i << " and " << j;
    }
}

TEST(PrefixCodeTest, TheSteepestCountsAreHeldToTheLimit) {
    const Counts counts = fibonacciCounts(40);
    for (const unsigned longest : {6U, 7U, 12U, 15U}) {
        const Lengths lengths = lengthsOf(counts, longest);
        EXPECT_EQ(kraftSum(lengths), 1U << 15) << longest;
        EXPECT_EQ(*std::ranges::max_element(lengths), longest);
    }
    EXPECT_GT(bitsOf(counts, lengthsOf(counts, 15)), fewestBits(counts)); // the limit had to be held
}

TEST(PrefixCodeTest, AsManySymbolsAsTheLimitHasWordsAllHaveThatLength) {
    EXPECT_EQ(lengthsOf(fibonacciCounts(32), 5), Lengths(32, 5));
}

TEST(PrefixCodeTest, FewerThanTwoSymbolsAreJoinedByOthers) {
    EXPECT_THAT(lengthsOf({0, 0, 0}, 7), ElementsAre(1, 1, 0));
    EXPECT_THAT(lengthsOf({9, 0, 0}, 7), ElementsAre(1, 1, 0));
    EXPECT_THAT(lengthsOf({0, 0, 9}, 7), ElementsAre(1, 0, 1));
    EXPECT_THAT(lengthsOf({0, 0, 0xFFFFFFFE}, 7), ElementsAre(1, 0, 1));
}

TEST(PrefixCodeTest, EqualCountsAreSettledByTheOrderOfTheSymbols) {
    EXPECT_THAT(lengthsOf({1, 1, 1, 1, 1}, 7), ElementsAre(3, 3, 2, 2, 2));
    EXPECT_EQ(lengthsOf(someCounts(286, 5), 12), lengthsOf(someCounts(286, 5), 12));
}

TEST(PrefixCodeTest, WordsAreThoseOfTheStandardTurnedRound) {
    const Lengths lengths{3, 3, 3, 3, 3, 2, 4, 4}; // the standard's own example
    std::vector<std::uint16_t> words(lengths.size());
    assignCodes(lengths, words);
    EXPECT_THAT(words, ElementsAre(0b010, 0b110, 0b001, 0b101, 0b011, 0b00, 0b0111, 0b1111));
}

TEST(PrefixCodeTest, WhatHasNoLengthHasNoWord) {
    const Lengths lengths{0, 1, 0, 1};
    std::vector<std::uint16_t> words(lengths.size(), 7);
    assignCodes(lengths, words);
    EXPECT_THAT(words, ElementsAre(0, 0, 0, 1));
}

} // namespace
} // namespace Platform::Imaging::Png
