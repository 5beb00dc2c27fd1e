#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace Platform {

/// A 128-bit identifier in the platform's four fields.
struct Guid {
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    std::array<std::uint8_t, 8> Data4 = {};

    bool operator==(const Guid&) const = default;
};

/// 38 characters: lower-case hexadecimal digits in five groups, in braces. ASCII.
inline std::string guidToText(const Guid& guid) {
    std::array<char, 39> text{};
    const auto& d = guid.Data4;
    std::snprintf(text.data(), text.size(), "{%08x-%04hx-%04hx-%02hhx%02hhx-%02hhx%02hhx%02hhx%02hhx%02hhx%02hhx}",
                  guid.Data1, guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    return text.data();
}

namespace GuidHelper {

/// A new random identifier: version 4, variant 1 (RFC 4122, section 4.4).
inline Guid CreateNewGuid() {
    std::random_device random;
    Guid guid;
    guid.Data1 = random();
    const std::uint32_t middle = random();
    guid.Data2 = static_cast<std::uint16_t>(middle);
    guid.Data3 = static_cast<std::uint16_t>((middle >> 16 & 0x0FFF) | 0x4000);
    for (std::size_t i = 0; i < guid.Data4.size(); i += 4) {
        const std::uint32_t bits = random();
        for (std::size_t k = 0; k < 4; ++k)
            guid.Data4.at(i + k) = static_cast<std::uint8_t>(bits >> (8 * k));
    }
    guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

} // namespace GuidHelper
} // namespace Platform
