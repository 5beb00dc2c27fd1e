#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Halden::System {

/// One piece of /proc/PROCESS/smaps.
struct ProcessMapping {
    std::uint64_t begin = 0;
    std::uint64_t end = 0; ///< the first address behind it
    std::uint64_t fileOffset = 0;
    std::uint64_t inode = 0; ///< 0: no file
    bool readable = false;
    bool writable = false;
    bool executable = false;
    bool shared = false;
    bool changed = false; ///< holds pages of its own, which differ from the file's
    std::string name;
};

std::vector<ProcessMapping> readMaps(pid_t process);

} // namespace Halden::System
