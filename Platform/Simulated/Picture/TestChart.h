#pragma once

#include "Platform/Imaging/Canvas.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Platform::Simulated {

/// A rectangle of one exact colour in the test chart, to the last pixel around its middle.
struct ChartPatch {
    Imaging::Rectangle area;
    Imaging::Colour colour;
};

/// What the caption of a frame says. Texts are UTF-8; one that is not well-formed is left out.
struct ChartCaption {
    std::string cameraName;
    /// Base-2 logarithm of the exposure in seconds; none for a camera whose exposure cannot be set.
    std::optional<double> exposureExponent;
    std::uint64_t frameNumber = 0;
    std::string time;
};

/// The built-in scene at the neutral exposure; the same picture for the same size each time. What does
/// not fit a very small size is left out. Raises winrt::hresult_error for sizes of 0 or beyond the limits of
/// decodeImage. Any thread.
Imaging::RgbImage drawTestChart(std::uint32_t width, std::uint32_t height);

/// The patches of known colour in the chart of that size: colours first, then the grey steps from
/// white to black. Empty ones, at very small sizes, are left out.
std::vector<ChartPatch> chartPatches(std::uint32_t width, std::uint32_t height);

/// Where the caption goes in a picture of that size: a strip at its lower edge, empty at very small sizes.
Imaging::Rectangle captionArea(std::uint32_t width, std::uint32_t height);

/// Writes the caption over the strip of a picture; nothing outside the strip changes. Any thread.
void drawCaption(Imaging::RgbImage& image, const ChartCaption& caption);

} // namespace Platform::Simulated
