#pragma once

#include <chrono>
#include <string>

namespace CommandLine {

/// The time in UTC, its date and seconds as strftime() takes the format, with milliseconds behind them:
/// "2026-11-22T12:53:22.123Z". The whole is at most 40 characters. Any thread.
std::string utcText(std::chrono::system_clock::time_point time, const char* format);

} // namespace CommandLine
