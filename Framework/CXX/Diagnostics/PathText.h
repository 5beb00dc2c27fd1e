#pragma once

#include <string>
#include <string_view>

// Paths as UTF-16 text, with "/" between their parts.
namespace Halden {

/// With one separator between the two; a right side that begins with one replaces the left side.
std::u16string joinPaths(std::u16string_view left, std::u16string_view right);

/// Whether the path leads to a folder, through links.
bool isFolder(const std::u16string& path);

/// Whether the path leads to anything, through links.
bool pathExists(const std::string& path);
bool pathExists(const std::u16string& path);

/// The text without any blank.
std::u16string withoutBlanks(std::u16string_view text);
std::string withoutBlanks(std::string_view text);

} // namespace Halden
