#include "Platform/Imaging/Png/TokenCode.h"

namespace Platform::Imaging::Png {
namespace {

/// RFC 1951, 3.2.5: four symbols for each number of extra bits, but eight without and one for the longest.
constexpr auto repetitionSymbols = [] {
    std::array<RepetitionSymbol, longestRepetition + 1> table{};
    std::size_t length = 3;
    for (std::uint16_t symbol = 0; symbol < 28; ++symbol) {
        const auto extraCount = static_cast<std::uint8_t>(symbol < 8 ? 0 : symbol / 4 - 1);
        for (unsigned extra = 0; extra < 1U << extraCount; ++extra, ++length)
            table[length] = {static_cast<std::uint16_t>(endOfBlock + 1 + symbol), static_cast<std::uint8_t>(extra),
                             extraCount};
    }
    table[longestRepetition] = {tokenSymbols - 1, 0, 0};
    return table;
}();

} // namespace

RepetitionSymbol repetitionSymbol(std::size_t length) { return repetitionSymbols[length]; }

std::array<std::uint32_t, tokenSymbols> TokenCounts::total() const {
    std::array<std::uint32_t, tokenSymbols> sums{};
    for (const auto& part : parts)
        for (std::size_t symbol = 0; symbol < tokenSymbols; ++symbol)
            sums[symbol] += part[symbol];
    return sums;
}

} // namespace Platform::Imaging::Png
