#include "Platform/Simulated/Picture/TestChart.h"

#include "Platform/Imaging/ImagingError.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <span>

namespace Platform::Simulated {
namespace {

using Imaging::Canvas;
using Imaging::Colour;
using Imaging::Point;
using Imaging::Rectangle;

constexpr Colour black{0, 0, 0};
constexpr Colour white{255, 255, 255};
constexpr Colour grey{118, 118, 118}; // reflects 18 % of the light, as photographers' grey cards do
constexpr Colour gridGrey{127, 127, 127};
constexpr Colour frameGrey{28, 28, 28};

constexpr int patchColumns = 4;
constexpr int panelRows = 6;
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
constexpr std::array<std::uint8_t, 14> wedgeSamples{255, 219, 188, 160, 137, 117, 99, 84, 71, 59, 49, 41, 34, 0};

/// Where things are in a chart of one size.
struct Layout {
    int gap;     // between the large parts
    int cellGap; // between the cells of a panel
    int border;
    Rectangle content; // all but the caption
    Point centre;      // of the whole picture
    double starRadius;
    Rectangle hueBand;
    Rectangle greyBand;
    Rectangle leftPanel;
    Rectangle rightPanel;
    Rectangle wedge;
};

Layout layOut(std::uint32_t imageWidth, std::uint32_t imageHeight) {
    const int width = static_cast<int>(imageWidth);
    const int height = static_cast<int>(imageHeight);
    Layout at{};
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

/// One cell of an area that is cut into equal columns and rows; it may span several rows.
Rectangle cellOf(const Rectangle& area, int gap, int columns, int column, int rows, int row, int rowSpan = 1) {
    const int left = (area.width + gap) * column / columns;
    const int right = (area.width + gap) * (column + 1) / columns - gap;
    const int top = (area.height + gap) * row / rows;
    const int bottom = (area.height + gap) * (row + rowSpan) / rows - gap;
    return {area.x + left, area.y + top, right - left, bottom - top};
}

void addPatches(std::vector<ChartPatch>& patches, const Rectangle& panel, int gap, int columns,
                std::span<const Colour> colours) {
    for (int i = 0; i < static_cast<int>(colours.size()); ++i) {
        const Rectangle area = cellOf(panel, gap, columns, i % columns, panelRows, i / columns);
        if (!area.isEmpty())
            patches.push_back({area, colours[static_cast<std::size_t>(i)]});
    }
}

Rectangle wedgeStep(const Layout& at, int step) {
    return cellOf(at.wedge, 0, static_cast<int>(wedgeSamples.size()), step, 1, 0);
}

std::vector<ChartPatch> patchesOf(const Layout& at) {
    std::vector<ChartPatch> patches;
    addPatches(patches, at.leftPanel, at.cellGap, patchColumns, patchColours);
    addPatches(patches, at.rightPanel, at.cellGap, pureColumns, pureColours);
    for (int step = 0; step < static_cast<int>(wedgeSamples.size()); ++step) {
        const std::uint8_t sample = wedgeSamples[static_cast<std::size_t>(step)];
        if (const Rectangle area = wedgeStep(at, step); !area.isEmpty())
            patches.push_back({area, {sample, sample, sample}});
    }
    return patches;
}

void drawBackground(Canvas& canvas, const Layout& at) {
    canvas.fill(at.content, grey);
    const int spacing = 2 * at.gap;
    const int lineWidth = std::max(1, at.gap / 24);
    const int centreX = at.content.width / 2;
    const int centreY = static_cast<int>(at.centre.y);
    for (int x = centreX % spacing; x < at.content.width; x += spacing)
        canvas.fill({x, 0, lineWidth, at.content.height}, gridGrey);
    for (int y = centreY % spacing; y < at.content.height; y += spacing)
        canvas.fill({0, y, at.content.width, lineWidth}, gridGrey);
}

/// Dark frames behind the parts, so that none of their colours runs into the background.
void drawFrames(Canvas& canvas, const Layout& at) {
    const Rectangle bands{at.hueBand.x, at.hueBand.y, at.hueBand.width, at.greyBand.bottom() - at.hueBand.y};
    for (const Rectangle& part : {bands, at.leftPanel, at.rightPanel, at.wedge})
        if (!part.isEmpty())
            canvas.fill(
                {part.x - at.cellGap, part.y - at.cellGap, part.width + 2 * at.cellGap, part.height + 2 * at.cellGap},
                frameGrey);
}

/// Blocks in black and white along the edges, white at both ends of each.
void drawBorder(Canvas& canvas, const Layout& at) {
    const auto [x, y, width, height] = at.content;
    const int columns = std::max(1, width / at.gap / 2) | 1;
    for (int i = 0; i < columns; ++i) {
        const int left = width * i / columns;
        const int length = width * (i + 1) / columns - left;
        canvas.fill({left, 0, length, at.border}, i % 2 ? black : white);
        canvas.fill({left, height - at.border, length, at.border}, i % 2 ? black : white);
    }
    const int rows = std::max(1, height / at.gap / 2) | 1;
    for (int i = 0; i < rows; ++i) {
        const int top = height * i / rows;
        const int length = height * (i + 1) / rows - top;
        canvas.fill({0, top, at.border, length}, i % 2 ? black : white);
        canvas.fill({width - at.border, top, at.border, length}, i % 2 ? black : white);
    }
}

void drawGradients(Canvas& canvas, const Layout& at) {
    canvas.fillGradient(
        at.hueBand, {{255, 0, 0}, {255, 255, 0}, {0, 255, 0}, {0, 255, 255}, {0, 0, 255}, {255, 0, 255}, {255, 0, 0}});
    canvas.fillGradient(at.greyBand, {black, white});
}

/// A cross through the exact centre, as many pixels wide as centres the lines: odd for odd sizes.
void drawCentreCross(Canvas& canvas, const Layout& at, double length) {
    const int width = static_cast<int>(2 * at.centre.x);
    const int height = static_cast<int>(2 * at.centre.y);
    const int thickness = std::max(1, static_cast<int>(length / 12));
    const int across = thickness + (thickness + width) % 2;
    const int down = thickness + (thickness + height) % 2;
    const int reachX = static_cast<int>(length) * 2 + width % 2;
    const int reachY = static_cast<int>(length) * 2 + height % 2;
    canvas.fill({(width - across) / 2, (height - reachY) / 2, across, reachY}, black);
    canvas.fill({(width - reachX) / 2, (height - down) / 2, reachX, down}, black);
}

/// A Siemens star: the finer the detail that a picture keeps, the farther in its spokes are told apart.
void drawStar(Canvas& canvas, const Layout& at) {
    constexpr int spokes = 36;
    const double ring = std::max(1.0, at.starRadius / 60);
    const double radius = at.starRadius - ring;
    canvas.fillCircle(at.centre, radius, white);
    const auto onCircle = [&](double spoke) {
        const double angle = 2 * std::numbers::pi * spoke / spokes;
        return Point{at.centre.x + radius * std::cos(angle), at.centre.y + radius * std::sin(angle)};
    };
    for (int i = 0; i < spokes; ++i)
        canvas.fillPolygon({at.centre, onCircle(i - 0.25), onCircle(i), onCircle(i + 0.25)}, black);
    canvas.strokeCircle(at.centre, radius + ring / 2, ring, black);
    canvas.fillCircle(at.centre, radius * 0.14, white);
    canvas.strokeCircle(at.centre, radius * 0.14, ring, black);
    drawCentreCross(canvas, at, radius * 0.09);
}

/// A small label in the lower left corner of a cell, where there is room for legible letters.
void drawLabel(Canvas& canvas, const Rectangle& cell, const std::string& text, Colour letters, Colour plate) {
    constexpr double smallestLetters = 8;
    const double size = std::min(cell.width / 3.5, cell.height / 3.5);
    if (size < smallestLetters)
        return;
    const double padding = size / 4;
    const int plateHeight = static_cast<int>(size + padding);
    const Rectangle area{cell.x, cell.bottom() - plateHeight,
                         static_cast<int>(canvas.textWidth(size, text) + 2 * padding), plateHeight};
    canvas.fill(area, plate);
    canvas.drawText(area, {area.x + padding, area.bottom() - 1.3 * padding}, size, text, letters);
}

/// Lines of 1 to 4 pixels' width, upright ones above lying ones.
void drawGratings(Canvas& canvas, const Layout& at) {
    constexpr int widths = 4;
    constexpr int firstRow = 2;
    for (int line = 1; line <= widths; ++line) {
        const Rectangle upright = cellOf(at.rightPanel, at.cellGap, widths, line - 1, panelRows, firstRow);
        canvas.fill(upright, white);
        for (int x = upright.x; x < upright.right(); x += 2 * line)
            canvas.fill({x, upright.y, std::min(line, upright.right() - x), upright.height}, black);
        const Rectangle lying = cellOf(at.rightPanel, at.cellGap, widths, line - 1, panelRows, firstRow + 1);
        canvas.fill(lying, white);
        for (int y = lying.y; y < lying.bottom(); y += 2 * line)
            canvas.fill({lying.x, y, lying.width, std::min(line, lying.bottom() - y)}, black);
        drawLabel(canvas, lying, std::to_string(line), white, black);
    }
}

/// Rings of equal area, alternately black and white: they get finer towards the edge.
void drawZonePlate(Canvas& canvas, const Rectangle& cell) {
    constexpr int rings = 32;
    canvas.fill(cell, white);
    const Point centre{cell.x + cell.width / 2.0, cell.y + cell.height / 2.0};
    const double radius = 0.94 * std::min(cell.width, cell.height) / 2;
    for (int ring = rings; ring > 0; --ring)
        canvas.fillCircle(centre, radius * std::sqrt(static_cast<double>(ring) / rings), ring % 2 ? white : black);
}

/// A square turned by five degrees: the edges that sharpness is commonly measured on.
void drawSlantedSquare(Canvas& canvas, const Rectangle& cell) {
    constexpr double tilt = 5 * std::numbers::pi / 180;
    constexpr double quarterTurn = std::numbers::pi / 2;
    if (cell.isEmpty())
        return;
    canvas.fill(cell, white);
    const Point centre{cell.x + cell.width / 2.0, cell.y + cell.height / 2.0};
    const double halfDiagonal = 0.45 * std::min(cell.width, cell.height);
    std::vector<Point> corners;
    for (int corner = 0; corner < 4; ++corner) {
        const double angle = quarterTurn * (corner + 0.5) + tilt;
        corners.push_back({centre.x + halfDiagonal * std::cos(angle), centre.y + halfDiagonal * std::sin(angle)});
    }
    canvas.fillPolygon(corners, black);
}

void drawPatches(Canvas& canvas, const Layout& at) {
    for (const ChartPatch& patch : patchesOf(at))
        canvas.fill(patch.area, patch.colour);
    // The wedge's whole stops are numbered, below the middles of its steps.
    for (int step = 0; step + 1 < static_cast<int>(wedgeSamples.size()); step += 2) {
        const std::uint8_t sample = wedgeSamples[static_cast<std::size_t>(step)];
        const Rectangle area = wedgeStep(at, step);
        const std::string stops = step ? "-" + std::to_string(step / 2) : "0";
        drawLabel(canvas, area, stops, sample > 80 ? black : white, {sample, sample, sample});
    }
}

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

Imaging::RgbImage drawTestChart(std::uint32_t width, std::uint32_t height) {
    Imaging::requireSizeWithinLimits(width, height, "Test chart");
    Canvas canvas(width, height);
    const Layout at = layOut(width, height);
    drawBackground(canvas, at);
    drawFrames(canvas, at);
    drawBorder(canvas, at);
    drawGradients(canvas, at);
    drawStar(canvas, at);
    drawGratings(canvas, at);
    drawZonePlate(canvas, cellOf(at.rightPanel, at.cellGap, 2, 0, panelRows, 4, 2));
    drawSlantedSquare(canvas, cellOf(at.rightPanel, at.cellGap, 2, 1, panelRows, 4, 2));
    drawPatches(canvas, at);
    return canvas.toImage();
}

std::vector<ChartPatch> chartPatches(std::uint32_t width, std::uint32_t height) {
    return patchesOf(layOut(width, height));
}

Imaging::Rectangle captionArea(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint32_t smallestSide = 96;
    constexpr std::uint32_t lowestLegible = 26; // two lines of letters
    if (width < smallestSide || height < smallestSide)
        return {};
    const auto stripHeight = static_cast<int>(std::max(lowestLegible, std::min(height / 14, width / 12)));
    return {0, static_cast<int>(height) - stripHeight, static_cast<int>(width), stripHeight};
}

void drawCaption(Imaging::RgbImage& image, const ChartCaption& caption) {
    constexpr Colour paper{18, 20, 24};
    constexpr Colour accent{255, 176, 32};
    constexpr Colour firstLine{245, 245, 245};
    constexpr Colour secondLine{190, 196, 204};
    const Rectangle strip = captionArea(image.width, image.height);
    if (strip.isEmpty())
        return;
    Canvas canvas(image.width, static_cast<std::uint32_t>(strip.height));
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
    canvas.copyInto(image, strip.x, strip.y);
}

} // namespace Platform::Simulated
