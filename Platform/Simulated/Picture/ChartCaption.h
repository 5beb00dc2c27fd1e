#pragma once

#include "Platform/Imaging/Canvas.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Platform::Simulated {

/// What the caption of a frame says. Texts are UTF-8; one that is not well-formed is left out.
struct ChartCaption {
    std::string cameraName;
    /// Base-2 logarithm of the exposure in seconds; none for a camera whose exposure cannot be set.
    std::optional<double> exposureExponent;
    std::uint64_t frameNumber = 0;
    std::string time;
};

/// Where the caption goes in a picture of that size: a strip at its lower edge, empty at very small sizes.
Imaging::Rectangle captionArea(std::uint32_t width, std::uint32_t height);

/// That strip of a picture of that size; without pixels where there is no room for it. Any thread.
Imaging::RgbImage drawCaption(std::uint32_t width, std::uint32_t height, const ChartCaption& caption);

} // namespace Platform::Simulated
