#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// Paths as UTF-16 text. One that is not well-formed counts as empty.
namespace Halden {

std::filesystem::path toPath(std::u16string_view text);

/// With one separator between the two; an absolute right side replaces the left side.
std::u16string joinPaths(std::u16string_view left, std::u16string_view right);

/// Whether the path leads to a folder, through links. False if that can't be told.
bool isFolder(std::u16string_view path);

/// Whether the path leads to anything, through links. False if that can't be told.
bool pathExists(std::u16string_view path);

/// The text without any blank.
std::u16string withoutBlanks(std::u16string text);
std::string withoutBlanks(std::string text);

} // namespace Halden
