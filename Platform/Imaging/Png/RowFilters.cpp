#include "Platform/Imaging/Png/RowFilters.h"

#include <array>
#include <cstring>
#include <utility>

// Compiled once for each instruction set; the best that the machine has is chosen when it runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Platform/Imaging/Png/RowFilters.cpp"
#include <hwy/foreach_target.h>
// The line above comes first.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Platform::Imaging::Png::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr hn::ScalableTag<std::uint8_t> bytesTag;
constexpr hn::ScalableTag<std::int8_t> signedTag;
constexpr hn::ScalableTag<std::uint64_t> sumsTag;
using Bytes = hn::Vec<decltype(bytesTag)>;
using Sums = hn::Vec<decltype(sumsTag)>;

HWY_INLINE Bytes distance(Bytes a, Bytes b) { return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a)); }

/// Half the sum, rounded down; the instruction that there is rounds up.
HWY_INLINE Bytes average(Bytes a, Bytes b) {
    return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(bytesTag, 1)));
}

/// Paeth's predictor: of left, up and corner the one that is nearest to left + up - corner, in this order where they
/// are equally near. In bytes: a corner beyond both others takes the one that is farther from it; if it lies between
/// them, its own distance is the difference of theirs.
HWY_INLINE Bytes paeth(Bytes left, Bytes up, Bytes corner) {
    const Bytes low = hn::Min(left, up);
    const Bytes high = hn::Max(left, up);
    const Bytes toLeft = distance(up, corner);
    const Bytes toUp = distance(left, corner);
    const Bytes toCorner = distance(toLeft, toUp);
    const Bytes nearest = hn::Min(toLeft, toUp);
    const Bytes leftOrUp = hn::IfThenElse(hn::Eq(nearest, toLeft), left, up);
    const Bytes between = hn::IfThenElse(hn::Eq(hn::Min(toCorner, nearest), nearest), leftOrUp, corner);
    const Bytes above = hn::IfThenElse(hn::Eq(hn::Max(corner, high), corner), low, between);
    return hn::IfThenElse(hn::Eq(hn::Min(corner, low), corner), high, above);
}

HWY_INLINE Sums sumWithoutSigns(Bytes differences) {
    return hn::SumsOf8(hn::BitCast(bytesTag, hn::Abs(hn::BitCast(signedTag, differences))));
}

/// One row filtered in four ways at once, and what each costs.
class Candidates {
public:
    Candidates(const std::uint8_t* current, const std::uint8_t* above, std::uint8_t* out, std::size_t pitch)
        : _current(current), _above(above), _out(out), _pitch(pitch) {}

    HWY_INLINE void filter(std::size_t at) {
        filter(at, [](Bytes differences) HWY_ATTR { return differences; });
    }

    /// The last `count` bytes, fewer than a vector has; what is behind them counts nothing.
    HWY_INLINE void filterTail(std::size_t at, std::size_t count) {
        const auto mask = hn::FirstN(bytesTag, count);
        filter(at, [&mask](Bytes differences) HWY_ATTR { return hn::IfThenElseZero(mask, differences); });
    }

    HWY_INLINE std::size_t cheapest() const {
        const std::array<std::uint64_t, RowFilters::candidates> costs{total(_sub), total(_up), total(_average),
                                                                      total(_paeth)};
        std::size_t best = 0;
        for (std::size_t candidate = 1; candidate < costs.size(); ++candidate)
            if (costs[candidate] < costs[best])
                best = candidate;
        return best;
    }

private:
    template <typename Keep> HWY_INLINE void filter(std::size_t at, Keep keep) {
        const Bytes here = hn::LoadU(bytesTag, _current + at);
        const Bytes left = hn::LoadU(bytesTag, _current + at - 3);
        const Bytes up = hn::LoadU(bytesTag, _above + at);
        const Bytes corner = hn::LoadU(bytesTag, _above + at - 3);
        std::uint8_t* out = _out + at;
        _sub = store(keep(hn::Sub(here, left)), out, _sub);
        _up = store(keep(hn::Sub(here, up)), out + _pitch, _up);
        _average = store(keep(hn::Sub(here, average(left, up))), out + 2 * _pitch, _average);
        _paeth = store(keep(hn::Sub(here, paeth(left, up, corner))), out + 3 * _pitch, _paeth);
    }

    static HWY_INLINE Sums store(Bytes differences, std::uint8_t* out, Sums sums) {
        hn::StoreU(differences, bytesTag, out);
        return hn::Add(sums, sumWithoutSigns(differences));
    }

    static HWY_INLINE std::uint64_t total(Sums sums) { return hn::GetLane(hn::SumOfLanes(sumsTag, sums)); }

    const std::uint8_t* _current;
    const std::uint8_t* _above;
    std::uint8_t* _out;
    std::size_t _pitch;
    Sums _sub = hn::Zero(sumsTag);
    Sums _up = hn::Zero(sumsTag);
    Sums _average = hn::Zero(sumsTag);
    Sums _paeth = hn::Zero(sumsTag);
};

/// Three bytes before both rows are zero, and there is a vector of slack behind them. Returns which of the four
/// filtered rows in `out`, `pitch` apart, is the cheapest.
std::size_t filterInAllWays(const std::uint8_t* current, const std::uint8_t* above, std::size_t size, std::uint8_t* out,
                            std::size_t pitch) {
    const std::size_t lanes = hn::Lanes(bytesTag);
    Candidates candidates(current, above, out, pitch);
    std::size_t at = 0;
    for (; at + lanes <= size; at += lanes)
        candidates.filter(at);
    if (at < size)
        candidates.filterTail(at, size - at);
    return candidates.cheapest();
}

} // namespace
} // namespace Platform::Imaging::Png::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Platform::Imaging::Png {
namespace {

HWY_EXPORT(filterInAllWays);

// Room for the widest vector, 64 bytes: before a row (of which three are read) and behind it.
constexpr std::size_t vectorSize = 64;

std::size_t pitchOf(std::size_t rowSize) { return (rowSize + 3 * vectorSize - 1) / vectorSize * vectorSize; }

} // namespace

RowFilters::RowFilters(std::size_t rowSize)
    : _rowSize(rowSize), _pitch(pitchOf(rowSize)), _rows(2 * _pitch), _filtered(candidates * _pitch),
      _current(vectorSize), _above(_current + _pitch) {}

std::span<std::uint8_t> RowFilters::nextRow() { return {_rows.data() + _current, _rowSize}; }

void RowFilters::filterRow(std::uint8_t* out) {
    const std::size_t best = HWY_DYNAMIC_DISPATCH(filterInAllWays)(_rows.data() + _current, _rows.data() + _above,
                                                                   _rowSize, _filtered.data(), _pitch);
    out[0] = types[best];
    std::memcpy(out + 1, _filtered.data() + best * _pitch, _rowSize);
    std::swap(_current, _above);
}

} // namespace Platform::Imaging::Png
#endif
