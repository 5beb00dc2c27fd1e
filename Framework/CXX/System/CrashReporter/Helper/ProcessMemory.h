#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>

namespace Halden::System {

/// Reads the memory of another process, which must not change meanwhile: pages are kept.
class ProcessMemory {
public:
    explicit ProcessMemory(pid_t process) : _process(process) {}

    /// False if not all of it can be read; errno then tells why.
    bool read(std::uint64_t address, void* buffer, std::size_t size) const;

    /// Empty if it can't be read.
    std::optional<std::uint64_t> word(std::uint64_t address);

private:
    static constexpr std::size_t pageSize = 4096;
    using Page = std::array<unsigned char, pageSize>;

    pid_t _process;
    std::unordered_map<std::uint64_t, Page> _pages;
};

} // namespace Halden::System
