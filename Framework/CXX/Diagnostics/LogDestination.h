#pragma once

#include <filesystem>

namespace Halden {

/// Whether a log can be written there without waiting for a reader: to a regular file, or none as yet; to a device like
/// /dev/null; to what standard output or standard error is at this moment. For a folder the answer is yes: to open it
/// fails at once.
bool mayBeLogFile(const std::filesystem::path& file);

} // namespace Halden
