#include "Platform/Imaging/YuvToRgb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

// Compiled once for each instruction set; the best that the machine has is chosen when it runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Imaging/YuvToRgb.cpp"
#include <hwy/foreach_target.h>
// The line above comes first.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Platform::Imaging::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

// What the vectors below do, for a pixel at a time.

int mixRows(const ChromaRows& rows, std::ptrdiff_t at) { return 3 * rows.near[at] + rows.far[at]; }

int interpolate(const ChromaRows& rows, std::size_t x) {
    const auto at = static_cast<std::ptrdiff_t>(x / 2);
    const int neighbour = mixRows(rows, x % 2 == 0 ? at - 1 : at + 1);
    return (((3 * mixRows(rows, at) + neighbour + 8) >> 4) - 128) * 256;
}

int multiply(int number, std::int16_t factor) { return (number * factor + (1 << 14)) >> 15; }

std::uint8_t toSample(int sum) { return static_cast<std::uint8_t>(std::clamp(sum >> 6, 0, 255)); }

std::size_t convertRow(const YuvToRgb::Factors& factors, const std::uint8_t* luma, const ChromaRows& u,
                       const ChromaRows& v, std::size_t width, std::uint8_t* rgb) {
    for (std::size_t x = 0; x < width; ++x, rgb += 3) {
        const int y = multiply((luma[x] - factors.black) * 128, factors.luma) + 32;
        const int blueDistance = interpolate(u, x);
        const int redDistance = interpolate(v, x);
        rgb[0] = toSample(y + multiply(redDistance, factors.redOfV));
        rgb[1] = toSample(y + multiply(blueDistance, factors.greenOfU) + multiply(redDistance, factors.greenOfV));
        rgb[2] = toSample(y + multiply(blueDistance, factors.blueOfU));
    }
    return width;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

constexpr hn::ScalableTag<std::uint8_t> bytesTag;
constexpr hn::ScalableTag<std::uint16_t> wordsTag;
constexpr hn::ScalableTag<std::int16_t> signedTag;
constexpr hn::Rebind<std::uint8_t, decltype(wordsTag)> halfBytesTag;
using Bytes = hn::Vec<decltype(bytesTag)>;
using Words = hn::Vec<decltype(wordsTag)>;
using Signed = hn::Vec<decltype(signedTag)>;

/// A number for each pixel of even and of odd position.
template <typename Vector> struct Pair {
    Vector even;
    Vector odd;
};

/// Three times the samples of the near row and once those of the far one.
HWY_INLINE Words mixRows(const ChromaRows& rows, std::ptrdiff_t at) {
    const Words near = hn::PromoteTo(wordsTag, hn::LoadU(halfBytesTag, rows.near + at));
    const Words far = hn::PromoteTo(wordsTag, hn::LoadU(halfBytesTag, rows.far + at));
    return hn::Add(hn::Add(near, near), hn::Add(near, far));
}

/// The distances from 128, times 256, of the pixels whose own samples begin at `at`: nine parts of those, three of each
/// neighbour's on its side and in the far row, one of that between the two.
HWY_INLINE Pair<Signed> interpolate(const ChromaRows& rows, std::ptrdiff_t at) {
    const Words here = mixRows(rows, at);
    const Words rounding = hn::Set(wordsTag, 8);
    const Words threeTimes = hn::Add(hn::Add(here, here), hn::Add(here, rounding));
    const auto centred = [](Words sixteenTimes) HWY_ATTR {
        const Words sample = hn::ShiftRight<4>(sixteenTimes);
        return hn::BitCast(signedTag, hn::ShiftLeft<8>(hn::Xor(sample, hn::Set(wordsTag, 128))));
    };
    return {centred(hn::Add(threeTimes, mixRows(rows, at - 1))), centred(hn::Add(threeTimes, mixRows(rows, at + 1)))};
}

/// The factors in all lanes.
struct Matrix {
    explicit HWY_INLINE Matrix(const YuvToRgb::Factors& factors)
        : black(hn::Set(signedTag, factors.black)), luma(hn::Set(signedTag, factors.luma)),
          redOfV(hn::Set(signedTag, factors.redOfV)), greenOfU(hn::Set(signedTag, factors.greenOfU)),
          greenOfV(hn::Set(signedTag, factors.greenOfV)), blueOfU(hn::Set(signedTag, factors.blueOfU)) {}

    Signed black, luma, redOfV, greenOfU, greenOfV, blueOfU;
};

// All sums below are in 64ths.

HWY_INLINE Signed brightness(const Matrix& matrix, Words luma) {
    const Signed distance = hn::ShiftLeft<7>(hn::Sub(hn::BitCast(signedTag, luma), matrix.black));
    return hn::Add(hn::MulFixedPoint15(distance, matrix.luma), hn::Set(signedTag, 32));
}

HWY_INLINE Words toSample(Signed sum) {
    const Signed sample = hn::ShiftRight<6>(sum);
    return hn::BitCast(wordsTag, hn::Min(hn::Max(sample, hn::Zero(signedTag)), hn::Set(signedTag, 255)));
}

HWY_INLINE Bytes interleave(const Pair<Signed>& sums) {
    return hn::BitCast(bytesTag, hn::Or(toSample(sums.even), hn::ShiftLeft<8>(toSample(sums.odd))));
}

/// As many pixels as a vector has bytes, of which `pair` is the first.
HWY_INLINE void convertPixels(const Matrix& matrix, const std::uint8_t* luma, const ChromaRows& chromaU,
                              const ChromaRows& chromaV, std::ptrdiff_t pair, std::uint8_t* rgb) {
    const Words lumas = hn::BitCast(wordsTag, hn::LoadU(bytesTag, luma + 2 * pair));
    const Pair<Signed> y{brightness(matrix, hn::And(lumas, hn::Set(wordsTag, 255))),
                         brightness(matrix, hn::ShiftRight<8>(lumas))};
    const Pair<Signed> u = interpolate(chromaU, pair);
    const Pair<Signed> v = interpolate(chromaV, pair);
    const auto plus = [&y](const Pair<Signed>& chroma, Signed factor) HWY_ATTR -> Pair<Signed> {
        return {hn::SaturatedAdd(y.even, hn::MulFixedPoint15(chroma.even, factor)),
                hn::SaturatedAdd(y.odd, hn::MulFixedPoint15(chroma.odd, factor))};
    };
    const Pair<Signed> green = plus(u, matrix.greenOfU);
    const Pair<Signed> greenOfV{hn::MulFixedPoint15(v.even, matrix.greenOfV),
                                hn::MulFixedPoint15(v.odd, matrix.greenOfV)};
    hn::StoreInterleaved3(
        interleave(plus(v, matrix.redOfV)),
        interleave({hn::SaturatedAdd(green.even, greenOfV.even), hn::SaturatedAdd(green.odd, greenOfV.odd)}),
        interleave(plus(u, matrix.blueOfU)), bytesTag, rgb + 6 * pair);
}

/// As many pixels as fill whole vectors; returns their number.
std::size_t convertRow(const YuvToRgb::Factors& factors, const std::uint8_t* luma, const ChromaRows& u,
                       const ChromaRows& v, std::size_t width, std::uint8_t* rgb) {
    const Matrix matrix(factors);
    const std::size_t lanes = hn::Lanes(bytesTag);
    std::size_t done = 0;
    for (; done + lanes <= width; done += lanes)
        convertPixels(matrix, luma, u, v, static_cast<std::ptrdiff_t>(done / 2), rgb);
    return done;
}

#endif

} // namespace
} // namespace Platform::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Platform::Imaging {
namespace {

HWY_EXPORT(convertRow);

// Of the widest vector.
constexpr std::size_t vectorSize = 64;

/// The weights of red and blue in brightness (ITU-R BT.601, BT.709, BT.2020).
struct Weights {
    double red;
    double blue;
};

Weights weightsOf(YuvMatrix matrix) {
    switch (matrix) {
    case YuvMatrix::Bt709:
        return {0.2126, 0.0722};
    case YuvMatrix::Bt2020:
        return {0.2627, 0.0593};
    default:
        return {0.299, 0.114};
    }
}

std::int16_t fixed(double value) { return static_cast<std::int16_t>(std::lround(value * 32768.0)); }

} // namespace

YuvToRgb::YuvToRgb(YuvMatrix matrix, SampleRange range) {
    const bool full = range == SampleRange::Full;
    const double lumaScale = full ? 1.0 : 255.0 / 219.0;
    const double chromaScale = full ? 1.0 : 255.0 / 224.0;
    const auto [red, blue] = weightsOf(matrix);
    const double green = 1.0 - red - blue;
    const double redOfV = 2.0 * (1.0 - red) * chromaScale;
    const double blueOfU = 2.0 * (1.0 - blue) * chromaScale;
    _factors = {.black = static_cast<std::int16_t>(full ? 0 : 16),
                .luma = fixed(lumaScale / 2),
                .redOfV = fixed(redOfV / 4),
                .greenOfU = fixed(-blueOfU * blue / green / 4),
                .greenOfV = fixed(-redOfV * red / green / 4),
                .blueOfU = fixed(blueOfU / 4)};
}

void YuvToRgb::convertRow(const std::uint8_t* luma, const ChromaRows& u, const ChromaRows& v, std::size_t width,
                          std::uint8_t* rgb) const {
    const auto convert = HWY_DYNAMIC_DISPATCH(convertRow);
    const std::size_t done = convert(_factors, luma, u, v, width, rgb);
    if (done == width)
        return;
    // The rest, in a vector of its own.
    std::array<std::uint8_t, vectorSize> lastLuma{};
    std::array<std::uint8_t, 3 * vectorSize> lastRgb;
    std::memcpy(lastLuma.data(), luma + done, width - done);
    convert(_factors, lastLuma.data(), {u.near + done / 2, u.far + done / 2}, {v.near + done / 2, v.far + done / 2},
            vectorSize, lastRgb.data());
    std::memcpy(rgb + 3 * done, lastRgb.data(), 3 * (width - done));
}

} // namespace Platform::Imaging
#endif
