#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace UsbCamera {

using Bytes = std::vector<std::uint8_t>;

/// Appends the lowest `size` bytes of a number, lowest first, as all of USB has them.
inline void append(Bytes& bytes, std::uint64_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

inline void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// The number that `size` bytes from `offset` on stand for; bytes that are not there count as 0.
inline std::uint32_t numberAt(const Bytes& bytes, std::size_t offset, unsigned size) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < size && offset + i < bytes.size(); ++i)
        value |= std::uint32_t{bytes[offset + i]} << (8 * i);
    return value;
}

} // namespace UsbCamera
