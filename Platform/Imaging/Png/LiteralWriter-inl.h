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

#if HWY_TARGET == HWY_AVX3_DL

/// The tables lie in registers: 64 bytes are looked up at once, their words joined by twos, fours and eights.
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
        const __mmask64 wanted = _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
        const __m512i literals = _mm512_maskz_loadu_epi8(wanted, bytes);
        const __m512i lengths = _mm512_maskz_mov_epi8(wanted, _lengths.at(literals));
        const __m512i low = _mm512_maskz_mov_epi8(wanted, _lowBytes.at(literals));
        const __m512i high = _mm512_maskz_mov_epi8(wanted, _highBytes.at(literals));
        // Each 128 bits hold 16 literals: the first eight of them become a's, the others b's.
        const __m512i zero = _mm512_setzero_si512();
        const Words a = fours(_mm512_unpacklo_epi8(low, high), _mm512_unpacklo_epi8(lengths, zero));
        const Words b = fours(_mm512_unpackhi_epi8(low, high), _mm512_unpackhi_epi8(lengths, zero));
        const Words first{_mm512_unpacklo_epi64(a.bits, b.bits), _mm512_unpacklo_epi64(a.lengths, b.lengths)};
        const Words second{_mm512_unpackhi_epi64(a.bits, b.bits), _mm512_unpackhi_epi64(a.lengths, b.lengths)};
        put(first, second, out);
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

    /// Alternately four of the first and four of the second, together wherever all of them fit.
    static HWY_INLINE void put(const Words& first, const Words& second, BitWriter& out) {
        alignas(64) std::array<std::uint64_t, 8> bits;
        alignas(64) std::array<std::uint64_t, 8> lengths;
        const __m512i lengthsOfEights = _mm512_add_epi64(first.lengths, second.lengths);
        const __m512i most = _mm512_set1_epi64(BitWriter::most);
        if (HWY_LIKELY(_mm512_cmpgt_epi64_mask(lengthsOfEights, most) == 0)) {
            _mm512_store_si512(bits.data(), _mm512_or_si512(first.bits, _mm512_sllv_epi64(second.bits, first.lengths)));
            _mm512_store_si512(lengths.data(), lengthsOfEights);
            for (std::size_t i = 0; i < bits.size(); ++i)
                out.put(bits[i], static_cast<unsigned>(lengths[i]));
            return;
        }
        alignas(64) std::array<std::uint64_t, 8> secondBits;
        alignas(64) std::array<std::uint64_t, 8> secondLengths;
        _mm512_store_si512(bits.data(), first.bits);
        _mm512_store_si512(lengths.data(), first.lengths);
        _mm512_store_si512(secondBits.data(), second.bits);
        _mm512_store_si512(secondLengths.data(), second.lengths);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            out.put(bits[i], static_cast<unsigned>(lengths[i]));
            out.put(secondBits[i], static_cast<unsigned>(secondLengths[i]));
        }
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
        auto pair = code.pairs.begin();
        for (std::uint32_t second = 0; second < 256; ++second) {
            const std::uint32_t word = code.words[second];
            const std::uint32_t length = code.lengths[second];
            for (std::uint32_t first = 0; first < 256; ++first)
                *pair++ = code.words[first] | word << code.lengths[first] | (code.lengths[first] + length) << pairBits;
        }
    }

    HWY_INLINE explicit LiteralWriter(const TokenCode& code) : _code(code) {}

    HWY_INLINE void write(const std::uint8_t* bytes, std::size_t count, BitWriter& out) const {
        std::size_t at = 0;
        for (; at + 4 <= count; at += 4) {
            const std::uint32_t first = pairAt(bytes + at);
            const std::uint32_t second = pairAt(bytes + at + 2);
            const std::uint32_t firstLength = first >> pairBits;
            out.put(std::uint64_t{first & pairMask} | std::uint64_t{second & pairMask} << firstLength,
                    firstLength + (second >> pairBits));
        }
        for (; at < count; ++at)
            out.put(_code.words[bytes[at]], _code.lengths[bytes[at]]);
    }

private:
    static constexpr unsigned pairBits = 24;
    static constexpr std::uint32_t pairMask = (1U << pairBits) - 1;
    static_assert(2 * longestWord <= pairBits);

    HWY_INLINE std::uint32_t pairAt(const std::uint8_t* bytes) const { return _code.pairs[bytes[0] | bytes[1] << 8]; }

    const TokenCode& _code;
};

#endif

} // namespace
} // namespace Platform::Imaging::Png::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
