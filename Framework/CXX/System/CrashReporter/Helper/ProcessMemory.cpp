#include "Framework/CXX/System/CrashReporter/Helper/ProcessMemory.h"

#include <sys/uio.h>

#include <bit>
#include <cstring>

namespace Halden::System {

bool ProcessMemory::read(std::uint64_t address, void* buffer, std::size_t size) const {
    const iovec local{buffer, size};
    const iovec remote{std::bit_cast<void*>(address), size};
    return process_vm_readv(_process, &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

std::optional<std::uint64_t> ProcessMemory::word(std::uint64_t address) {
    std::uint64_t value = 0;
    const std::uint64_t offset = address % pageSize;
    if (offset > pageSize - sizeof(value)) // across two pages
        return read(address, &value, sizeof(value)) ? std::optional(value) : std::nullopt;
    const std::uint64_t begin = address - offset;
    auto page = _pages.find(begin);
    if (page == _pages.end()) {
        Page content;
        if (!read(begin, content.data(), content.size()))
            return std::nullopt;
        page = _pages.emplace(begin, content).first;
    }
    std::memcpy(&value, page->second.data() + offset, sizeof(value));
    return value;
}

} // namespace Halden::System
