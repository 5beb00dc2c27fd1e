#include "Tools/Text/TimeText.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace CommandLine {

std::string utcText(std::chrono::system_clock::time_point time, const char* format) {
    const auto whole = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(whole);
    const std::time_t clock = std::chrono::system_clock::to_time_t(seconds);
    std::tm utc{};
    gmtime_r(&clock, &utc);
    std::array<char, 34> date{};
    std::strftime(date.data(), date.size(), format, &utc);
    std::array<char, 8> fraction{};
    (void)std::snprintf(fraction.data(), fraction.size(), ".%03dZ", static_cast<int>((whole - seconds).count()));
    return std::string(date.data()) + fraction.data();
}

} // namespace CommandLine
