#include "Platform/Simulated/Picture/ChartCaption.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace Platform::Simulated {
namespace {

using Imaging::Canvas;
using Imaging::Colour;
using Imaging::Rectangle;

std::string exposureText(const std::optional<double>& exponent) {
    if (!exponent)
        return "fixed exposure";
    const double seconds = std::exp2(*exponent);
    constexpr double longestFraction = 0.4; // seconds; longer times read better as decimals
    std::array<char, 120> text{};
    if (seconds < longestFraction)
        std::snprintf(text.data(), text.size(), "1/%.0f s  (2^%.2f)  %.0f us", 1 / seconds, *exponent, seconds * 1e6);
    else
        std::snprintf(text.data(), text.size(), "%.3g s  (2^%.2f)  %.0f us", seconds, *exponent, seconds * 1e6);
    return text.data();
}

/// One line of the caption: a text from the left, one to the right; where both do not fit, in smaller letters,
/// and if need be with the end of the left one cut off.
void drawCaptionLine(Canvas& canvas, const Rectangle& line, const std::string& left, const std::string& right,
                     Colour colour) {
    constexpr double smallestShare = 0.7;
    double size = 0.8 * line.height;
    const double needed = canvas.textWidth(size, left) + size + canvas.textWidth(size, right);
    size *= std::clamp(line.width / needed, smallestShare, 1.0);
    const double baseline = line.y + 0.8 * line.height;
    const int rightWidth = static_cast<int>(std::ceil(canvas.textWidth(size, right)));
    const int leftWidth = line.width - rightWidth - static_cast<int>(size);
    canvas.drawText({line.x, line.y, leftWidth, line.height}, {static_cast<double>(line.x), baseline}, size, left,
                    colour);
    canvas.drawText(line, {static_cast<double>(line.right() - rightWidth), baseline}, size, right, colour);
}

} // namespace

Imaging::Rectangle captionArea(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint32_t smallestSide = 96;
    constexpr std::uint32_t lowestLegible = 26; // two lines of letters
    if (width < smallestSide || height < smallestSide)
        return {};
    const auto stripHeight = static_cast<int>(std::max(lowestLegible, std::min(height / 14, width / 12)));
    return {0, static_cast<int>(height) - stripHeight, static_cast<int>(width), stripHeight};
}

Imaging::RgbImage drawCaption(std::uint32_t width, std::uint32_t height, const ChartCaption& caption) {
    constexpr Colour paper{18, 20, 24};
    constexpr Colour accent{255, 176, 32};
    constexpr Colour firstLine{245, 245, 245};
    constexpr Colour secondLine{190, 196, 204};
    const Rectangle strip = captionArea(width, height);
    if (strip.isEmpty())
        return {};
    Canvas canvas(width, static_cast<std::uint32_t>(strip.height));
    canvas.fill({0, 0, strip.width, strip.height}, paper);
    const int accentHeight = std::max(1, strip.height / 26);
    canvas.fill({0, 0, strip.width, accentHeight}, accent);

    const int margin = strip.height / 4;
    const int lineHeight = (strip.height - accentHeight) * 9 / 20;
    const int top = accentHeight + (strip.height - accentHeight - 2 * lineHeight) / 2;
    const Rectangle upper{margin, top, strip.width - 2 * margin, lineHeight};
    const Rectangle lower{margin, top + lineHeight, upper.width, lineHeight};
    drawCaptionLine(canvas, upper, caption.cameraName, caption.time, firstLine);
    drawCaptionLine(canvas, lower, exposureText(caption.exposureExponent),
                    "frame " + std::to_string(caption.frameNumber), secondLine);
    return canvas.toImage();
}

} // namespace Platform::Simulated
