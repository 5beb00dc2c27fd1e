#include "Platform/Simulated/Picture/SceneExposure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Platform::Simulated {
namespace {

// The sRGB transfer functions between samples and linear light, both from 0 to 1: IEC 61966-2-1:1999,
// 5.2 and 5.3.
double linearFromSample(double sample) {
    return sample <= 0.04045 ? sample / 12.92 : std::pow((sample + 0.055) / 1.055, 2.4);
}

double sampleFromLinear(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

} // namespace

SceneExposure::Table SceneExposure::tableOf(double stops) {
    const double factor = std::exp2(stops);
    // Black stays black even when the factor is infinite, where the product would be no number.
    Table table{};
    for (std::size_t sample = 1; sample < table.size(); ++sample) {
        const double light = linearFromSample(static_cast<double>(sample) / 255) * factor;
        table[sample] = static_cast<std::uint8_t>(std::lround(255 * sampleFromLinear(std::min(light, 1.0))));
    }
    return table;
}

SceneExposure::SceneExposure(double stops) {
    if (stops != 0 && !std::isnan(stops))
        _table = tableOf(stops);
}

void SceneExposure::apply(std::span<std::uint8_t> samples) const {
    if (!_table)
        return;
    const Table& table = *_table;
    for (std::uint8_t& sample : samples)
        sample = table[sample];
}

} // namespace Platform::Simulated
