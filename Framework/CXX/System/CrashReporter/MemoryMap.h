#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Halden::System {

/// One line of /proc/self/maps.
struct Mapping {
    std::uint64_t begin;
    std::uint64_t end; ///< the first address behind it
    std::uint64_t fileOffset;
    bool executable;
    std::string_view name; ///< empty: no file
};

/// The memory map of this process, in a buffer of its own; a map that is larger is cut off. Large: for
/// static memory only. Async-signal-safe.
class MemoryMap {
public:
    void readOwn() noexcept;

    /// Null if nothing is mapped there.
    const Mapping* find(std::uint64_t address) const noexcept;

    /// As the kernel wrote it.
    std::string_view text() const noexcept { return {_text.data(), _size}; }

private:
    void parse() noexcept;

    std::array<char, 512UL * 1024> _text = {};
    std::size_t _size = 0;
    std::array<Mapping, 4096> _mappings = {};
    std::size_t _count = 0;
};

} // namespace Halden::System
