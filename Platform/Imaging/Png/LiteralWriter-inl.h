// Writes literals, with the instruction set for which the file that includes this is being compiled. Included once for
// each, so the guard lets it in again.
#if defined(HUB_LITERAL_WRITER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef HUB_LITERAL_WRITER_INL_H
#undef HUB_LITERAL_WRITER_INL_H
#else
#define HUB_LITERAL_WRITER_INL_H
#endif

#include "Platform/Imaging/Png/BitWriter.h"
#include "Platform/Imaging/Png/TokenCode.h"

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if HWY_TARGET == HWY_AVX3_DL
#include <immintrin.h>
#endif

HWY_BEFORE_NAMESPACE();
namespace Platform::Imaging::Png::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3_DL

/// The tables lie in registers: 64 bytes are looked up at once, and their words joined by twos, fours and eights.
class LiteralWriter {
public:
    static void prepare(TokenCode& code) {
        for (std::size_t literal = 0; literal < 256; ++literal) {
            code.literalLengths[literal] = code.lengths[literal];
            code.lowBytes[literal] = static_cast<std::uint8_t>(code.words[literal]);
            code.highBytes[literal] = static_cast<std::uint8_t>(code.words[literal] >> 8);
        }
    }

    HWY_INLINE explicit LiteralWriter(const TokenCode& code)
        : _lengths(code.literalLengths), _lowBytes(code.lowBytes), _highBytes(code.highBytes) {}

    /// At most 64.
    HWY_INLINE void write(const std::uint8_t* bytes, std::size_t count, BitWriter& out) const {
        if (HWY_LIKELY(count == 64))
            writeEights(wordsOf(bytes, ~__mmask64{0}), out);
        else
            writeFours(wordsOf(bytes, _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count))), count, out);
    }

private:
    /// 256 bytes in four registers.
    class Table {
    public:
        HWY_INLINE explicit Table(const std::array<std::uint8_t, 256>& bytes)
            : _a(_mm512_load_si512(bytes.data())), _b(_mm512_load_si512(bytes.data() + 64)),
              _c(_mm512_load_si512(bytes.data() + 128)), _d(_mm512_load_si512(bytes.data() + 192)) {}

        HWY_INLINE __m512i at(__m512i indices) const {
            return _mm512_mask_blend_epi8(_mm512_movepi8_mask(indices), _mm512_permutex2var_epi8(_a, indices, _b),
                                          _mm512_permutex2var_epi8(_c, indices, _d));
        }

    private:
        __m512i _a, _b, _c, _d;
    };

    /// In each 64 bits the words of some literals, and how many bits they have.
    struct Words {
        __m512i bits;
        __m512i lengths;
    };

    /// Eight eights: the fours that each begins with, and those that it ends with.
    struct Eights {
        Words first;
        Words second;
    };

    HWY_INLINE Eights wordsOf(const std::uint8_t* bytes, __mmask64 wanted) const {
        const __m512i literals = _mm512_maskz_loadu_epi8(wanted, bytes);
        const __m512i lengths = _mm512_maskz_mov_epi8(wanted, _lengths.at(literals));
        const __m512i low = _mm512_maskz_mov_epi8(wanted, _lowBytes.at(literals));
        const __m512i high = _mm512_maskz_mov_epi8(wanted, _highBytes.at(literals));
        // Each 128 bits hold 16 literals: the first eight of them become a's, the others b's.
        const __m512i zero = _mm512_setzero_si512();
        const Words a = fours(_mm512_unpacklo_epi8(low, high), _mm512_unpacklo_epi8(lengths, zero));
        const Words b = fours(_mm512_unpackhi_epi8(low, high), _mm512_unpackhi_epi8(lengths, zero));
        return {{_mm512_unpacklo_epi64(a.bits, b.bits), _mm512_unpacklo_epi64(a.lengths, b.lengths)},
                {_mm512_unpackhi_epi64(a.bits, b.bits), _mm512_unpackhi_epi64(a.lengths, b.lengths)}};
    }

    /// Of four words in 16 bits each.
    static HWY_INLINE Words fours(__m512i words, __m512i lengths) {
        const __m512i low16 = _mm512_set1_epi32(0xFFFF);
        const __m512i evenLengths = _mm512_and_si512(lengths, low16);
        const __m512i twos = _mm512_or_si512(_mm512_and_si512(words, low16),
                                             _mm512_sllv_epi32(_mm512_srli_epi32(words, 16), evenLengths));
        const __m512i lengthsOfTwos = _mm512_add_epi32(evenLengths, _mm512_srli_epi32(lengths, 16));
        const __m512i low32 = _mm512_set1_epi64(0xFFFFFFFF);
        const __m512i lowerLengths = _mm512_and_si512(lengthsOfTwos, low32);
        return {_mm512_or_si512(_mm512_and_si512(twos, low32),
                                _mm512_sllv_epi64(_mm512_srli_epi64(twos, 32), lowerLengths)),
                _mm512_add_epi64(lowerLengths, _mm512_srli_epi64(lengthsOfTwos, 32))};
    }

    /// One behind the other.
    static HWY_INLINE void writeFours(const Eights& eights, std::size_t count, BitWriter& out) {
        alignas(64) std::array<std::uint64_t, 8> bits[2];
        alignas(64) std::array<std::uint64_t, 8> lengths[2];
        _mm512_store_si512(bits[0].data(), eights.first.bits);
        _mm512_store_si512(bits[1].data(), eights.second.bits);
        _mm512_store_si512(lengths[0].data(), eights.first.lengths);
        _mm512_store_si512(lengths[1].data(), eights.second.lengths);
        for (std::size_t i = 0; 4 * i < count; ++i)
            out.put(bits[i % 2][i / 2], static_cast<unsigned>(lengths[i % 2][i / 2]));
    }

    /// All at once, moved to where they belong in the stream: none waits for the one before.
    static HWY_INLINE void writeEights(const Eights& eights, BitWriter& out) {
        const __m512i zero = _mm512_setzero_si512();
        const __m512i lengths = _mm512_add_epi64(eights.first.lengths, eights.second.lengths);
        __m512i sums = _mm512_add_epi64(lengths, _mm512_alignr_epi64(lengths, zero, 7));
        sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 6));
        sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 4));
        // In bits from the first byte that is not full.
        const __m512i ends = _mm512_add_epi64(sums, _mm512_set1_epi64(out.pendingCount()));
        const __m512i begins = _mm512_sub_epi64(ends, lengths);

        // An eight has up to 104 bits, behind up to 7 of the one before: it takes two machine words.
        const __m512i wordSize = _mm512_set1_epi64(64);
        const __m512i firstShifts = _mm512_and_si512(begins, _mm512_set1_epi64(7));
        const __m512i secondShifts = _mm512_add_epi64(firstShifts, eights.first.lengths);
        const __m512i low = _mm512_or_si512(_mm512_sllv_epi64(eights.first.bits, firstShifts),
                                            _mm512_sllv_epi64(eights.second.bits, secondShifts));
        const __m512i high = _mm512_srlv_epi64(eights.second.bits, _mm512_sub_epi64(wordSize, secondShifts));

        // Those that fill no byte are all its own, since it has at least eight, and go before the next one's. A shift
        // by 64 or more, and by a number below 0, leaves nothing.
        const __m512i bytes = _mm512_srli_epi64(begins, 3);
        const __m512i full = _mm512_slli_epi64(_mm512_sub_epi64(_mm512_srli_epi64(ends, 3), bytes), 3);
        const __m512i rests =
            _mm512_or_si512(_mm512_srlv_epi64(low, full), _mm512_srlv_epi64(high, _mm512_sub_epi64(full, wordSize)));
        const __m512i pending = _mm512_set1_epi64(static_cast<long long>(out.pending()));
        const __m512i whole = _mm512_or_si512(low, _mm512_alignr_epi64(rests, pending, 7));

        alignas(64) std::array<std::uint64_t, 8> at;
        _mm512_store_si512(at.data(), bytes);
        storeTwo<0>(whole, high, at, out.end());
        storeTwo<1>(whole, high, at, out.end());
        storeTwo<2>(whole, high, at, out.end());
        storeTwo<3>(whole, high, at, out.end());
        out.skip(static_cast<unsigned>(last(sums)), last(rests));
    }

    template <int pair>
    static HWY_INLINE void storeTwo(__m512i low, __m512i high, const std::array<std::uint64_t, 8>& at,
                                    std::uint8_t* out) {
        const __m128i even = _mm512_extracti64x2_epi64(_mm512_unpacklo_epi64(low, high), pair);
        const __m128i odd = _mm512_extracti64x2_epi64(_mm512_unpackhi_epi64(low, high), pair);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at[2 * pair]), even);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at[2 * pair + 1]), odd);
    }

    static HWY_INLINE std::uint64_t last(__m512i numbers) {
        const __m512i turned = _mm512_alignr_epi64(numbers, numbers, 7);
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm512_castsi512_si128(turned)));
    }

    Table _lengths;
    Table _lowBytes;
    Table _highBytes;
};

#else

/// Looks the words of two literals up at once.
class LiteralWriter {
public:
    static void prepare(TokenCode& code) {
        const hn::ScalableTag<std::uint32_t> tag;
        alignas(64) std::array<std::uint32_t, 256> lengths;
        alignas(64) std::array<std::uint32_t, 256> words;
        std::ranges::copy(code.lengths.begin(), code.lengths.begin() + 256, lengths.begin());
        std::ranges::copy(code.words.begin(), code.words.begin() + 256, words.begin());
        auto* pairs = code.pairs.data();
        for (std::size_t second = 0; second < 256; ++second) {
            for (std::size_t first = 0; first < 256; first += hn::Lanes(tag), pairs += hn::Lanes(tag)) {
                const auto length = hn::Load(tag, lengths.data() + first);
                const auto word =
                    hn::Or(hn::Load(tag, words.data() + first), hn::Shl(hn::Set(tag, words[second]), length));
                const auto sum = hn::Add(length, hn::Set(tag, lengths[second]));
                hn::StoreU(hn::Or(hn::ShiftLeft<lengthBits>(word), sum), tag, pairs);
            }
        }
    }

    HWY_INLINE explicit LiteralWriter(const TokenCode& code) : _code(code) {}

    HWY_INLINE void write(const std::uint8_t* bytes, std::size_t count, BitWriter& out) const {
        BitWriter writer = out; // in registers
        std::size_t at = 0;
        if (HWY_LIKELY(count == 64)) {
#pragma GCC unroll 16
            for (; at < 64; at += 4)
                writeFour(bytes + at, writer);
        } else {
            for (; at + 4 <= count; at += 4)
                writeFour(bytes + at, writer);
            for (; at < count; ++at)
                writer.put(_code.words[bytes[at]], _code.lengths[bytes[at]]);
        }
        out = writer;
    }

private:
    // Of an entry of the table, for the length; the words are above.
    static constexpr unsigned lengthBits = 6;
    static_assert(2 * longestWord + lengthBits <= 32);

    HWY_INLINE void writeFour(const std::uint8_t* bytes, BitWriter& out) const {
        const std::uint64_t first = pairAt(bytes);
        const std::uint64_t second = pairAt(bytes + 2);
        // Beyond its lowest six bits a shift's number of bits does not matter, nor does that of the sum.
        out.put(first >> lengthBits | second >> lengthBits << (first & 63), (first + second) & 63);
    }

    HWY_INLINE std::uint32_t pairAt(const std::uint8_t* bytes) const { return _code.pairs[bytes[0] | bytes[1] << 8]; }

    const TokenCode& _code;
};

#endif

} // namespace
} // namespace Platform::Imaging::Png::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
