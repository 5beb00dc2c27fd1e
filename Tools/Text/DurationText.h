#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace CommandLine {

/// The longest that parseDuration reads.
constexpr std::chrono::milliseconds longestDuration = std::chrono::hours(24);

/// "250ms", "10s", "2min", "1h", and "0": none where it is no such text or above longestDuration. Any thread.
std::optional<std::chrono::milliseconds> parseDuration(std::string_view text);

/// "250 ms", "2.5 s", "2 min 5 s".
std::string durationText(std::chrono::milliseconds duration);

} // namespace CommandLine
