#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace CommandLine {

/// Writes a whole file or nothing: under a temporary name beside it, that is then changed. What stood there is
/// replaced. Throws Failure.
void writeFile(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);

/// The same for a name that no file in the folder has yet: name and ending, or if there is one, with "-2", "-3" behind
/// the name. The path of the file.
std::filesystem::path writeNewFile(const std::filesystem::path& folder, const std::string& name,
                                   const std::string& ending, std::span<const std::uint8_t> bytes);

/// Makes the folder and its parents where they are missing. Throws Failure.
void makeFolder(const std::filesystem::path& folder);

} // namespace CommandLine
