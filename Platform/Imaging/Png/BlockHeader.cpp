#include "Platform/Imaging/Png/BlockHeader.h"

#include "Platform/Imaging/Png/PrefixCode.h"

#include <algorithm>
#include <array>
#include <vector>

namespace Platform::Imaging::Png {
namespace {

constexpr unsigned storedBlock = 0;
constexpr unsigned codedBlock = 2;

// The alphabet of code lengths: 0 to 15, and three that repeat: the one before 3 to 6 times, 0 3 to 10 times, 0 11 to
// 138 times.
constexpr std::size_t lengthSymbols = 19;
constexpr std::uint8_t repeatLast = 16;
constexpr std::uint8_t repeatZero = 17;
constexpr std::uint8_t repeatZeroLong = 18;
constexpr unsigned longestLengthWord = 7;
// The order in which their own lengths are written, so that those seldom used can be left out at the end.
constexpr std::array<std::uint8_t, lengthSymbols> orderOfLengths{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                 11, 4,  12, 3, 13, 2, 14, 1, 15};

struct LengthToken {
    std::uint8_t symbol;
    std::uint8_t extraBits = 0;
    std::uint8_t extraCount = 0;
};

/// Appends repetitions, of at least 3, while there is room for one; returns how many are left.
std::size_t appendRepeats(std::vector<LengthToken>& tokens, LengthToken repeat, std::size_t fewest, std::size_t most,
                          std::size_t count) {
    while (count >= fewest) {
        const std::size_t next = std::min(count, most);
        repeat.extraBits = static_cast<std::uint8_t>(next - fewest);
        tokens.push_back(repeat);
        count -= next;
    }
    return count;
}

std::vector<LengthToken> tokensOf(std::span<const std::uint8_t> lengths) {
    std::vector<LengthToken> tokens;
    tokens.reserve(lengths.size());
    for (auto at = lengths.begin(); at != lengths.end();) {
        const std::uint8_t length = *at;
        const auto end = std::find_if(at, lengths.end(), [length](std::uint8_t other) { return other != length; });
        auto count = static_cast<std::size_t>(end - at);
        if (length == 0) {
            count = appendRepeats(tokens, {repeatZeroLong, 0, 7}, 11, 138, count);
            count = appendRepeats(tokens, {repeatZero, 0, 3}, 3, 10, count);
        } else {
            tokens.push_back({length});
            count = appendRepeats(tokens, {repeatLast, 0, 2}, 3, 6, count - 1);
        }
        tokens.insert(tokens.end(), count, {length});
        at = end;
    }
    return tokens;
}

} // namespace

void writeCodedHeader(std::span<const std::uint8_t, tokenSymbols> lengths, bool last, BitWriter& out) {
    std::array<std::uint8_t, tokenSymbols + 1> both{};
    std::ranges::copy(lengths, both.begin());
    both.back() = 1; // the distance
    const std::vector<LengthToken> tokens = tokensOf(both);

    std::array<std::uint32_t, lengthSymbols> counts{};
    for (const LengthToken& token : tokens)
        ++counts[token.symbol];
    std::array<std::uint8_t, lengthSymbols> wordLengths{};
    std::array<std::uint16_t, lengthSymbols> words{};
    assignLengths(counts, longestLengthWord, wordLengths);
    assignCodes(wordLengths, words);
    std::size_t written = lengthSymbols;
    while (written > 4 && wordLengths[orderOfLengths[written - 1]] == 0)
        --written;

    out.put(last ? 1 : 0, 1);
    out.put(codedBlock, 2);
    out.put(tokenSymbols - 257, 5);
    out.put(0, 5); // one distance
    out.put(written - 4, 4);
    for (std::size_t i = 0; i < written; ++i)
        out.put(wordLengths[orderOfLengths[i]], 3);
    for (const LengthToken& token : tokens) {
        out.put(words[token.symbol], wordLengths[token.symbol]);
        out.put(token.extraBits, token.extraCount);
    }
}

void writeStoredHeader(std::size_t size, bool last, BitWriter& out) {
    out.put(last ? 1 : 0, 1);
    out.put(storedBlock, 2);
    out.fillByte();
    out.put(size, 16);
    out.put(size ^ 0xFFFF, 16);
}

} // namespace Platform::Imaging::Png
