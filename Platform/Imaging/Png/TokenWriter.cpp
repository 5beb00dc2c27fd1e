#include "Platform/Imaging/Png/TokenWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

// Compiled once for each instruction set; the best that the machine has is chosen when it runs.
#define HWY_WANT_AVX3_DL 1
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Imaging/Png/TokenWriter.cpp"
#include <hwy/foreach_target.h>
// The line above comes first.
#include "Platform/Imaging/Png/LiteralWriter-inl.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Platform::Imaging::Png::HWY_NAMESPACE {
namespace {

// What is looked at in one step, whatever the width of the vectors: runs are found alike on every machine.
constexpr std::size_t stepSize = 64;
static_assert(stepSize <= tokenSlack);

/// Bit i tells whether byte i is 0.
HWY_INLINE std::uint64_t zerosAmong64(const std::uint8_t* bytes) {
    const hn::CappedTag<std::uint8_t, stepSize> tag;
    std::uint64_t zeros = 0;
    for (std::size_t at = 0; at < stepSize; at += hn::Lanes(tag)) {
        std::uint64_t bits = 0;
        std::uint8_t stored[sizeof(bits)] = {};
        hn::StoreMaskBits(tag, hn::Eq(hn::LoadU(tag, bytes + at), hn::Zero(tag)), stored);
        std::memcpy(&bits, stored, sizeof(bits));
        zeros |= bits << at;
    }
    return zeros;
}

/// Bit i tells whether the shortest run begins there.
HWY_INLINE std::uint64_t beginningsOfRuns(std::uint64_t zeros) {
    static_assert(shortestRun == 8);
    zeros &= zeros >> 1;
    zeros &= zeros >> 2;
    return zeros & zeros >> 4;
}

HWY_INLINE std::size_t lengthOfRun(const std::uint8_t* bytes, std::size_t most) {
    std::size_t length = 0;
    while (length < most) {
        const std::uint64_t others = ~zerosAmong64(bytes + length);
        if (others != 0)
            return std::min(most, length + static_cast<std::size_t>(std::countr_zero(others)));
        length += stepSize;
    }
    return most;
}

/// Calls tokens.literals(bytes, count) with at most stepSize bytes, and tokens.zeroRun(length).
template <typename Tokens> HWY_INLINE void forEachToken(std::span<const std::uint8_t> bytes, Tokens& tokens) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t count = std::min(stepSize, bytes.size() - at);
        const std::uint64_t inside = ~std::uint64_t{0} >> (stepSize - count);
        const std::uint64_t runs = beginningsOfRuns(zerosAmong64(bytes.data() + at) & inside);
        const std::size_t literals = runs == 0 ? count : static_cast<std::size_t>(std::countr_zero(runs));
        if (literals > 0)
            tokens.literals(bytes.data() + at, literals);
        at += literals;
        if (runs != 0) {
            const std::size_t length = lengthOfRun(bytes.data() + at, bytes.size() - at);
            tokens.zeroRun(length);
            at += length;
        }
    }
}

/// A run is a zero, and repetitions of it: calls repetition(length) for each.
template <typename Repetition> HWY_INLINE void splitRun(std::size_t length, Repetition repetition) {
    for (std::size_t left = length - 1; left > 0;) {
        std::size_t next = std::min(left, longestRepetition);
        if (left - next == 1 || left - next == 2)
            next -= 2; // what is left must have the three bytes that a repetition takes
        repetition(repetitionSymbol(next));
        left -= next;
    }
}

class Counter {
public:
    explicit Counter(TokenCounts& counts) : _counts(counts) {}

    HWY_INLINE void literals(const std::uint8_t* bytes, std::size_t count) {
        std::size_t at = 0;
        for (; at + 4 <= count; at += 4) {
            ++_counts.parts[0][bytes[at]];
            ++_counts.parts[1][bytes[at + 1]];
            ++_counts.parts[2][bytes[at + 2]];
            ++_counts.parts[3][bytes[at + 3]];
        }
        for (; at < count; ++at)
            ++_counts.parts[0][bytes[at]];
    }

    HWY_INLINE void zeroRun(std::size_t length) {
        ++_counts.parts[0][0];
        splitRun(length, [this](RepetitionSymbol next) HWY_ATTR { ++_counts.parts[0][next.symbol]; });
    }

private:
    TokenCounts& _counts;
};

class Writer {
public:
    Writer(const TokenCode& code, BitWriter& out) : _code(code), _literals(code), _out(out) {}

    HWY_INLINE void literals(const std::uint8_t* bytes, std::size_t count) { _literals.write(bytes, count, _out); }

    HWY_INLINE void zeroRun(std::size_t length) {
        _out.put(_code.words[0], _code.lengths[0]);
        splitRun(length, [this](RepetitionSymbol next) HWY_ATTR {
            _out.put(_code.words[next.symbol], _code.lengths[next.symbol]);
            // Behind the extra bits the word of the distance 1, the only one that there is: a 0.
            _out.put(next.extraBits, next.extraCount + 1U);
        });
    }

private:
    const TokenCode& _code;
    const LiteralWriter _literals;
    BitWriter& _out;
};

void countTokensHere(std::span<const std::uint8_t> bytes, TokenCounts& counts) {
    Counter counter(counts);
    forEachToken(bytes, counter);
}

void prepareTablesHere(TokenCode& code) { LiteralWriter::prepare(code); }

void writeTokensHere(std::span<const std::uint8_t> bytes, const TokenCode& code, BitWriter& out) {
    BitWriter local = out; // stays in registers
    Writer writer(code, local);
    forEachToken(bytes, writer);
    out = local;
}

} // namespace
} // namespace Platform::Imaging::Png::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Platform::Imaging::Png {
namespace {

HWY_EXPORT(countTokensHere);
HWY_EXPORT(prepareTablesHere);
HWY_EXPORT(writeTokensHere);

} // namespace

void countTokens(std::span<const std::uint8_t> bytes, TokenCounts& counts) {
    HWY_DYNAMIC_DISPATCH(countTokensHere)(bytes, counts);
}

void prepareTables(TokenCode& code) { HWY_DYNAMIC_DISPATCH(prepareTablesHere)(code); }

void writeTokens(std::span<const std::uint8_t> bytes, const TokenCode& code, BitWriter& out) {
    HWY_DYNAMIC_DISPATCH(writeTokensHere)(bytes, code, out);
}

} // namespace Platform::Imaging::Png
#endif
