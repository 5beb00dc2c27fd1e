#include "Platform/Imaging/Png/PrefixCode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Platform::Imaging::Png {
namespace {

constexpr unsigned longestOfAll = 15;

/// A symbol's count, above what its number takes: in their order, so that to sort them compares plain numbers.
using Symbol = std::uint64_t;
constexpr unsigned numberBits = 32;

constexpr Symbol symbolOf(std::uint32_t count, std::uint32_t number) { return Symbol{count} << numberBits | number; }
constexpr auto countOf(Symbol symbol) { return static_cast<std::uint32_t>(symbol >> numberBits); }
constexpr auto numberOf(Symbol symbol) { return static_cast<std::uint32_t>(symbol); }

/// Those that occur, at least two, the rarest first.
std::vector<Symbol> symbolsByCount(std::span<const std::uint32_t> counts) {
    std::vector<Symbol> symbols;
    symbols.reserve(counts.size());
    for (std::uint32_t number = 0; number < counts.size(); ++number)
        if (counts[number] > 0)
            symbols.push_back(symbolOf(counts[number], number));
    for (std::uint32_t number = 0; symbols.size() < 2; ++number)
        if (counts[number] == 0)
            symbols.push_back(symbolOf(1, number));
    std::ranges::sort(symbols);
    return symbols;
}

/// How deep each leaf of Huffman's tree lies, in the order of the symbols: leaves and then the inner nodes, which come
/// into being in the order of their weight, so that the two lightest are always at the head of one of the two.
std::vector<unsigned> depthsInTree(const std::vector<Symbol>& symbols) {
    const std::size_t leaves = symbols.size();
    const std::size_t nodes = 2 * leaves - 1;
    std::vector<std::uint32_t> weights(nodes);
    std::vector<std::size_t> parents(nodes);
    for (std::size_t leaf = 0; leaf < leaves; ++leaf)
        weights[leaf] = countOf(symbols[leaf]);
    std::size_t nextLeaf = 0;
    std::size_t nextInner = leaves;
    for (std::size_t made = leaves; made < nodes; ++made) {
        const auto takeLightest = [&] {
            const bool leafIsLighter =
                nextLeaf < leaves && (nextInner == made || weights[nextLeaf] <= weights[nextInner]);
            const std::size_t taken = leafIsLighter ? nextLeaf++ : nextInner++;
            parents[taken] = made;
            return weights[taken];
        };
        weights[made] = takeLightest();
        weights[made] += takeLightest();
    }
    std::vector<unsigned> depths(nodes); // the root is the last
    for (std::size_t node = nodes - 1; node-- > 0;)
        depths[node] = depths[parents[node]] + 1;
    depths.resize(leaves);
    return depths;
}

using LengthCounts = std::array<std::uint32_t, longestOfAll + 1>;

/// How many words have each length, none being longer than `longest`: those that were are cut, and for each word too
/// many a shorter one makes room by growing a bit, to which the word then is the sibling.
LengthCounts limitedLengths(const std::vector<unsigned>& depths, unsigned longest) {
    LengthCounts words{};
    for (const unsigned depth : depths)
        ++words[std::min(depth, longest)];
    std::uint64_t taken = 0; // of the 2^longest words of that length
    for (unsigned length = 1; length <= longest; ++length)
        taken += std::uint64_t{words[length]} << (longest - length);
    for (; taken > std::uint64_t{1} << longest; --taken) {
        unsigned length = longest - 1;
        while (words[length] == 0)
            --length;
        --words[length];
        words[length + 1] += 2;
        --words[longest];
    }
    return words;
}

} // namespace

void assignLengths(std::span<const std::uint32_t> counts, unsigned longest, std::span<std::uint8_t> lengths) {
    const std::vector<Symbol> symbols = symbolsByCount(counts);
    const LengthCounts words = limitedLengths(depthsInTree(symbols), longest);
    std::ranges::fill(lengths, std::uint8_t{0});
    auto symbol = symbols.begin();
    for (unsigned length = longest; length > 0; --length)
        for (std::uint32_t word = 0; word < words[length]; ++word)
            lengths[numberOf(*symbol++)] = static_cast<std::uint8_t>(length);
}

void assignCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes) {
    LengthCounts words{};
    for (const std::uint8_t length : lengths)
        ++words[length];
    words[0] = 0;
    std::array<unsigned, longestOfAll + 1> next{}; // the next word of each length
    for (unsigned length = 1; length <= longestOfAll; ++length)
        next[length] = (next[length - 1] + words[length - 1]) << 1;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        const unsigned length = lengths[symbol];
        unsigned word = length > 0 ? next[length]++ : 0;
        std::uint16_t turned = 0;
        for (unsigned bit = 0; bit < length; ++bit, word >>= 1)
            turned = static_cast<std::uint16_t>(turned << 1 | (word & 1));
        codes[symbol] = turned;
    }
}

} // namespace Platform::Imaging::Png
