#include "Tools/Text/DurationText.h"

#include "Tools/Text/Quantity.h"

#include <cmath>
#include <cstdint>

namespace CommandLine {
namespace {

using std::chrono::milliseconds;

std::optional<double> millisecondsOfUnit(std::string_view unit) {
    if (unit == "ms")
        return 1;
    if (unit == "s")
        return 1e3;
    if (unit == "min")
        return 60e3;
    if (unit == "h")
        return 3600e3;
    return std::nullopt;
}

} // namespace

std::optional<milliseconds> parseDuration(std::string_view text) {
    if (text == "0")
        return milliseconds(0);
    const std::optional<Quantity> quantity = readQuantity(text);
    const std::optional<double> unit = quantity ? millisecondsOfUnit(quantity->rest) : std::nullopt;
    if (!unit)
        return std::nullopt;
    const double count = std::round(quantity->number * *unit);
    if (count > static_cast<double>(longestDuration.count()))
        return std::nullopt;
    return milliseconds(static_cast<std::int64_t>(count));
}

std::string durationText(milliseconds duration) {
    if (duration < std::chrono::seconds(1))
        return std::to_string(duration.count()) + " ms";
    if (duration < std::chrono::minutes(1))
        return numberText(std::floor(static_cast<double>(duration.count()) / 100) / 10, 1) + " s";
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(duration);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration - minutes);
    const std::string text = std::to_string(minutes.count()) + " min";
    return seconds.count() == 0 ? text : text + " " + std::to_string(seconds.count()) + " s";
}

} // namespace CommandLine
