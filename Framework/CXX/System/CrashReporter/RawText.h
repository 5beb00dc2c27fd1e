#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Halden::System {

/// Text in a buffer of its own, for places where nothing may be allocated. What does not fit is cut off,
/// never inside a UTF-8 sequence. Always ends with a NUL.
template <std::size_t Capacity> class RawText {
public:
    constexpr RawText& text(std::string_view addition) noexcept {
        std::size_t count = addition.size();
        if (count > Capacity - _size) {
            count = Capacity - _size;
            while (count > 0 && (static_cast<unsigned char>(addition[count]) & 0xC0) == 0x80)
                --count;
        }
        for (std::size_t i = 0; i < count; ++i)
            _buffer[_size++] = addition[i];
        _buffer[_size] = '\0';
        return *this;
    }

    constexpr RawText& decimal(std::int64_t value, int digitsAtLeast = 1) noexcept {
        if (value < 0)
            text("-");
        const auto bits = static_cast<std::uint64_t>(value);
        return digits(value < 0 ? 0 - bits : bits, 10, digitsAtLeast);
    }

    /// With "0x" in front.
    constexpr RawText& hex(std::uint64_t value, int digitsAtLeast = 1) noexcept {
        return text("0x").digits(value, 16, digitsAtLeast);
    }

    constexpr void clear() noexcept {
        _size = 0;
        _buffer[0] = '\0';
    }

    constexpr bool empty() const noexcept { return _size == 0; }
    constexpr std::string_view view() const noexcept { return {_buffer, _size}; }
    constexpr const char* c_str() const noexcept { return _buffer; }

private:
    constexpr RawText& digits(std::uint64_t value, unsigned base, int digitsAtLeast) noexcept {
        constexpr int mostDigits = 20; // of 2^64 in decimal
        char reversed[mostDigits] = {};
        int count = 0;
        do {
            reversed[count++] = "0123456789abcdef"[value % base];
            value /= base;
        } while (value != 0);
        for (int padding = count; padding < digitsAtLeast; ++padding)
            text("0");
        while (count > 0)
            text({&reversed[--count], 1});
        return *this;
    }

    char _buffer[Capacity + 1] = {};
    std::size_t _size = 0;
};

/// Writes it all, whatever the number of pieces; gives up silently on an error. Async-signal-safe.
void writeAll(int descriptor, std::string_view text) noexcept;

} // namespace Halden::System
