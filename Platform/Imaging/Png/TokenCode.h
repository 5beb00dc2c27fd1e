#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Platform::Imaging::Png {

// The alphabet of deflate's first code (RFC 1951, 3.2.5): the 256 bytes, the end of a block, and 29 symbols for the
// lengths of repetitions.
constexpr std::size_t tokenSymbols = 286;
constexpr std::size_t endOfBlock = 256;

/// The shortest run of zeros that is written as a repetition: shorter ones take about as many bits byte by byte, and
/// each one interrupts the quick path.
constexpr std::size_t shortestRun = 8;

/// No word is longer, so that four of them fit into a machine word beside the bits that are pending, and two with their
/// length into half of one. Deflate allows 15, for which files would hardly be smaller; with 12 they are 1.5 % larger,
/// since the rare symbols take from the frequent ones.
constexpr unsigned longestWord = 13;

/// The symbol of a repetition's length, 3 to 258, and the bits behind its word.
struct RepetitionSymbol {
    std::uint16_t symbol = 0;
    std::uint8_t extraBits = 0;
    std::uint8_t extraCount = 0;
};

constexpr std::size_t longestRepetition = 258;
RepetitionSymbol repetitionSymbol(std::size_t length);

/// How often each symbol occurs: the sum of four, so that equal bytes in a row need not wait for each other.
struct TokenCounts {
    std::array<std::array<std::uint32_t, tokenSymbols>, 4> parts{};

    std::array<std::uint32_t, tokenSymbols> total() const;
};

/// One block's code, and the tables from which literals are written.
struct TokenCode {
    std::array<std::uint8_t, tokenSymbols> lengths{};
    std::array<std::uint16_t, tokenSymbols> words{};

    /// The literals' lengths and the words' lower and upper bytes, where registers hold these tables.
    alignas(64) std::array<std::uint8_t, 256> literalLengths;
    alignas(64) std::array<std::uint8_t, 256> lowBytes;
    alignas(64) std::array<std::uint8_t, 256> highBytes;
    /// Where they do not: by first | second << 8 the words of both literals, and in the lowest six bits the sum of
    /// their lengths.
    std::array<std::uint32_t, 65536> pairs;
};

} // namespace Platform::Imaging::Png
