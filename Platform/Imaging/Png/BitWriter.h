#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Platform::Imaging::Png {

/// Packs bits into bytes, the lowest bit first (RFC 1951, 3.1.1). The room is the caller's: each call may write up to
/// `slack` bytes beyond the ones that are full.
class BitWriter {
public:
    static constexpr std::size_t slack = 16;
    /// The most bits that one call takes.
    static constexpr unsigned most = 56;

    explicit BitWriter(std::uint8_t* out) : _out(out) {}

    /// No bit of `bits` above the lowest `count` may be set.
    void put(std::uint64_t bits, unsigned count) {
        _pending |= bits << _count;
        _count += count;
        std::memcpy(_out, &_pending, sizeof(_pending));
        _out += _count >> 3;
        _pending >>= _count & 56;
        _count &= 7;
    }

    /// What put() does, for a caller who has written these bits itself: from end() on, behind what was pending. Leaves
    /// `rest`, those that fill no byte.
    void skip(unsigned count, std::uint64_t rest) {
        _pending = rest;
        _count += count;
        _out += _count >> 3;
        _count &= 7;
    }

    void fillByte() {
        if (_count > 0)
            put(0, 8 - _count);
    }

    /// Behind the last full byte; what pending() holds is missing there.
    std::uint8_t* end() const { return _out; }
    /// The bits, fewer than 8, that do not fill a byte yet.
    std::uint64_t pending() const { return _pending; }
    unsigned pendingCount() const { return _count; }

private:
    static_assert(std::endian::native == std::endian::little, "put() stores the lowest byte first");

    std::uint8_t* _out;
    std::uint64_t _pending = 0;
    unsigned _count = 0;
};

} // namespace Platform::Imaging::Png
