#include "Tools/CameraHub/Picture/Histogram.h"

#include "Tools/Text/Quantity.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace CommandLine {
namespace {

/// By the weights that Rec. 709 gives the colours, in 1/10000.
std::size_t brightnessOf(const std::uint8_t* pixel) {
    return (2126U * pixel[0] + 7152U * pixel[1] + 722U * pixel[2]) / 10000U;
}

constexpr std::array<const char*, 9> blocks = {" ",      "\u2581", "\u2582", "\u2583", "\u2584",
                                               "\u2585", "\u2586", "\u2587", "\u2588"};

} // namespace

Histogram::Histogram(const RgbPicture& picture) {
    std::uint64_t bright = 0;
    std::uint64_t dark = 0;
    for (std::size_t i = 0; i < picture.samples.size(); i += 3) {
        const std::uint8_t* pixel = &picture.samples[i];
        ++_counts[brightnessOf(pixel)];
        const std::uint8_t most = std::max({pixel[0], pixel[1], pixel[2]});
        bright += most == 255 ? 1 : 0;
        dark += most == 0 ? 1 : 0;
    }
    const double pixels = static_cast<double>(picture.width) * picture.height;
    _tooBright = static_cast<double>(bright) / pixels;
    _tooDark = static_cast<double>(dark) / pixels;
}

std::string Histogram::line(int columns) const {
    std::vector<std::uint64_t> sums(static_cast<std::size_t>(columns), 0);
    for (std::size_t brightness = 0; brightness < _counts.size(); ++brightness)
        sums[brightness * sums.size() / _counts.size()] += _counts[brightness];
    const double highest = std::sqrt(static_cast<double>(*std::ranges::max_element(sums)));
    std::string line;
    for (const std::uint64_t sum : sums)
        line += blocks[static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(sum)) / highest * 8))];
    return line;
}

std::string shareText(double share) {
    const double percent = share * 100;
    if (percent > 0 && percent < 0.01)
        return "< 0.01 %";
    return numberText(percent, percent < 10 ? 2 : 0) + " %";
}

} // namespace CommandLine
