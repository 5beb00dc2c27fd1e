#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace CommandLine {

/// "20ms", "1/50s", "1/50", "20000us", "0.5s": none where it is no such text, or not from 1 us to
/// CaptureRequest::longestExposure. Any thread.
std::optional<std::chrono::microseconds> parseExposure(std::string_view text);

/// As people write it: "1/64 s (15.625 ms)", "300 ms" where no fraction of a second comes near, "2 s".
std::string exposureText(std::chrono::microseconds exposure);

/// The same without what stands in brackets: "1/64 s".
std::string shortExposureText(std::chrono::microseconds exposure);

/// "1/8192 s to 1 s", or "fixed" where both are the same.
std::string exposureRangeText(std::chrono::microseconds shortest, std::chrono::microseconds longest);

} // namespace CommandLine
