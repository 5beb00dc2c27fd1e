#include "Tools/Text/ExposureText.h"

#include "Tools/Text/Quantity.h"

#include <CameraHubClient/CaptureRequest.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace CommandLine {
namespace {

using std::chrono::microseconds;

constexpr double microsecondsOfSecond = 1e6;

std::optional<double> microsecondsOfUnit(std::string_view unit) {
    if (unit == "us" || unit == "\u00b5s" || unit == "\u03bcs") // the micro sign, and the Greek letter
        return 1;
    if (unit == "ms")
        return 1e3;
    if (unit == "s")
        return microsecondsOfSecond;
    return std::nullopt;
}

std::optional<microseconds> exposureOf(double count) {
    const double rounded = std::round(count);
    if (rounded < 1 || rounded > static_cast<double>(CameraHub::CaptureRequest::longestExposure.count()))
        return std::nullopt;
    return microseconds(static_cast<std::int64_t>(rounded));
}

/// "1/50s"; the unit may be missing.
std::optional<microseconds> parseFraction(double numerator, std::string_view text) {
    const std::optional<Quantity> denominator = readQuantity(text);
    if (!denominator || denominator->number == 0 || !(denominator->rest.empty() || denominator->rest == "s"))
        return std::nullopt;
    return exposureOf(numerator / denominator->number * microsecondsOfSecond);
}

/// Whether 1/denominator of a second is that time, which may have been cut off or rounded to a whole microsecond.
bool isFraction(microseconds exposure, std::int64_t denominator) {
    const double exact = microsecondsOfSecond / static_cast<double>(denominator);
    return std::abs(exact - static_cast<double>(exposure.count())) < 1;
}

bool hasThreeDigits(std::int64_t number) {
    while (number % 10 == 0)
        number /= 10;
    return number < 1000;
}

/// Those of cameras: powers of two, and such that people say ("1/50", "1/125", "1/1600"). 0 if there is none.
std::int64_t denominatorOf(microseconds exposure) {
    if (exposure.count() <= 0 || exposure >= std::chrono::seconds(1))
        return 0;
    const auto nearest =
        static_cast<std::int64_t>(std::round(microsecondsOfSecond / static_cast<double>(exposure.count())));
    const auto above = static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint64_t>(nearest)));
    for (const std::int64_t powerOfTwo : {above, above / 2})
        if (powerOfTwo > 1 && isFraction(exposure, powerOfTwo))
            return powerOfTwo;
    return nearest > 1 && isFraction(exposure, nearest) && hasThreeDigits(nearest) ? nearest : 0;
}

std::string decimalText(microseconds exposure) {
    const auto count = static_cast<double>(exposure.count());
    if (exposure < std::chrono::milliseconds(1))
        return numberText(count, 0) + " \u00b5s";
    if (exposure < std::chrono::seconds(1))
        return numberText(count / 1e3, 3) + " ms";
    return numberText(count / microsecondsOfSecond, 3) + " s";
}

} // namespace

std::optional<microseconds> parseExposure(std::string_view text) {
    const std::optional<Quantity> quantity = readQuantity(text);
    if (!quantity)
        return std::nullopt;
    if (quantity->rest.starts_with('/'))
        return parseFraction(quantity->number, quantity->rest.substr(1));
    const std::optional<double> unit = microsecondsOfUnit(quantity->rest);
    return unit ? exposureOf(quantity->number * *unit) : std::nullopt;
}

std::string shortExposureText(microseconds exposure) {
    const std::int64_t denominator = denominatorOf(exposure);
    return denominator == 0 ? decimalText(exposure) : "1/" + std::to_string(denominator) + " s";
}

std::string exposureText(microseconds exposure) {
    const std::string text = shortExposureText(exposure);
    return denominatorOf(exposure) == 0 ? text : text + " (" + decimalText(exposure) + ")";
}

std::string exposureRangeText(microseconds shortest, microseconds longest) {
    return shortest == longest ? "fixed" : shortExposureText(shortest) + " to " + shortExposureText(longest);
}

} // namespace CommandLine
