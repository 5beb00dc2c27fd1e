#pragma once

#include <string>

namespace CameraHubWeb {

/// The first line of the file, which clients have to know: 16 to 1024 printable characters of ASCII without blanks.
/// Throws std::runtime_error, its text one line for people, where there is none.
std::string readToken(const std::string& file);

} // namespace CameraHubWeb
