#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace Halden {

/// What came of reading a file.
struct FileReading {
    std::string bytes;          ///< as far as they could be read; none of what is too long, or no regular file
    const char* operation = ""; ///< what failed
    int error = 0;              ///< its errno; 0: all bytes are there
    std::string reason;         ///< why it failed
};

/// Reads a file of at most that many bytes. Never waits for a writer: what is no regular file (a pipe, a device) is a
/// failure. Any thread.
FileReading readRegularFile(const std::filesystem::path& file, std::size_t mostBytes);

} // namespace Halden
