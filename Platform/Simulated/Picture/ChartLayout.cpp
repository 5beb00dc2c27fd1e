#include "Platform/Simulated/Picture/ChartLayout.h"

#include "Platform/Simulated/Picture/ChartCaption.h"

#include <algorithm>
#include <array>
#include <span>

namespace Platform::Simulated {
namespace {

using Imaging::Colour;
using Imaging::Rectangle;

constexpr int patchColumns = 4;
/// Four a row, from the top: skin and earth, landscape, warm and cool, strong, stronger, pale.
constexpr std::array<Colour, patchColumns * panelRows> patchColours{{
    {94, 60, 44},    {146, 94, 66},   {203, 152, 126}, {234, 198, 172}, //
    {74, 104, 58},   {98, 138, 184},  {130, 126, 182}, {98, 186, 172},  //
    {220, 126, 44},  {196, 82, 98},   {72, 90, 170},   {86, 56, 108},   //
    {232, 168, 48},  {164, 192, 66},  {66, 150, 80},   {42, 58, 148},   //
    {178, 46, 56},   {240, 206, 38},  {190, 80, 152},  {10, 134, 164},  //
    {246, 214, 214}, {246, 240, 206}, {214, 236, 216}, {208, 222, 246}, //
}};

constexpr int pureColumns = 3;
/// The primaries, and below each its complement.
constexpr std::array<Colour, 6> pureColours{
    {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {0, 255, 255}, {255, 0, 255}, {255, 255, 0}}};

/// White and twelve steps down of half a stop of light each, in sRGB samples, and black.
constexpr std::array<std::uint8_t, wedgeStepCount> wedgeSamples{255, 219, 188, 160, 137, 117, 99,
                                                                84,  71,  59,  49,  41,  34,  0};

void addPatches(std::vector<ChartPatch>& patches, const Rectangle& panel, int gap, int columns,
                std::span<const Colour> colours) {
    for (int i = 0; i < static_cast<int>(colours.size()); ++i) {
        const Rectangle area = cellOf(panel, gap, columns, i % columns, panelRows, i / columns);
        if (!area.isEmpty())
            patches.push_back({area, colours[static_cast<std::size_t>(i)]});
    }
}

} // namespace

ChartLayout layOutChart(std::uint32_t imageWidth, std::uint32_t imageHeight) {
    const int width = static_cast<int>(imageWidth);
    const int height = static_cast<int>(imageHeight);
    ChartLayout at{};
    at.content = {0, 0, width, height - captionArea(imageWidth, imageHeight).height};
    at.gap = std::max(1, std::min(width, at.content.height) / 36);
    at.cellGap = std::max(1, at.gap / 5);
    at.border = std::max(1, at.gap / 3);
    at.centre = {width / 2.0, height / 2.0};

    const int inset = at.border + at.gap;
    const int left = inset;
    const int innerWidth = width - 2 * inset;
    const int innerBottom = at.content.height - inset;
    const int wedgeHeight = at.content.height / 8;
    at.wedge = {left, innerBottom - wedgeHeight, innerWidth, wedgeHeight};

    // The middle zone reaches as far up from the picture's centre as it reaches down.
    const int middleBottom = at.wedge.y - at.gap;
    const int middleTop = height - middleBottom;
    const int middleHeight = middleBottom - middleTop;
    const int bandsHeight = middleTop - at.gap - inset;
    const int hueHeight = bandsHeight * 3 / 5;
    at.hueBand = {left, inset, innerWidth, hueHeight};
    at.greyBand = {left, inset + hueHeight + at.cellGap, innerWidth, bandsHeight - hueHeight - at.cellGap};

    const int starSize = std::min(middleHeight, innerWidth * 2 / 5);
    at.starRadius = starSize / 2.0;
    const int panelWidth = (innerWidth - starSize) / 2 - at.gap;
    at.leftPanel = {left, middleTop, panelWidth, middleHeight};
    at.rightPanel = {width - inset - panelWidth, middleTop, panelWidth, middleHeight};
    return at;
}

Rectangle cellOf(const Rectangle& area, int gap, int columns, int column, int rows, int row, int rowSpan) {
    const int left = (area.width + gap) * column / columns;
    const int right = (area.width + gap) * (column + 1) / columns - gap;
    const int top = (area.height + gap) * row / rows;
    const int bottom = (area.height + gap) * (row + rowSpan) / rows - gap;
    return {area.x + left, area.y + top, right - left, bottom - top};
}

ChartPatch wedgeStep(const ChartLayout& at, int step) {
    const std::uint8_t sample = wedgeSamples.at(static_cast<std::size_t>(step));
    return {cellOf(at.wedge, 0, wedgeStepCount, step, 1, 0), {sample, sample, sample}};
}

std::vector<ChartPatch> chartPatches(const ChartLayout& at) {
    std::vector<ChartPatch> patches;
    addPatches(patches, at.leftPanel, at.cellGap, patchColumns, patchColours);
    addPatches(patches, at.rightPanel, at.cellGap, pureColumns, pureColours);
    for (int step = 0; step < wedgeStepCount; ++step)
        if (const ChartPatch patch = wedgeStep(at, step); !patch.area.isEmpty())
            patches.push_back(patch);
    return patches;
}

std::vector<ChartPatch> chartPatches(std::uint32_t width, std::uint32_t height) {
    return chartPatches(layOutChart(width, height));
}

} // namespace Platform::Simulated
