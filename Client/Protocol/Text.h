#pragma once

#include <string>
#include <string_view>

namespace CameraHub {

bool isUtf8(std::string_view text);

/// The text with a blank for each control character, as it goes into one line of a log or a terminal.
std::string inOneLine(std::string text);

/// Whether it is the text of a GUID without brackets, which all image ids are.
bool isImageId(std::string_view text);

} // namespace CameraHub
