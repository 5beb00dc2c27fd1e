#include "Platform/Simulated/Picture/TestChart.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Simulated/Picture/ChartLayout.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

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

void drawBackground(Canvas& canvas, const ChartLayout& at) {
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
void drawFrames(Canvas& canvas, const ChartLayout& at) {
    const Rectangle bands{at.hueBand.x, at.hueBand.y, at.hueBand.width, at.greyBand.bottom() - at.hueBand.y};
    for (const Rectangle& part : {bands, at.leftPanel, at.rightPanel, at.wedge})
        if (!part.isEmpty())
            canvas.fill(
                {part.x - at.cellGap, part.y - at.cellGap, part.width + 2 * at.cellGap, part.height + 2 * at.cellGap},
                frameGrey);
}

/// Blocks in black and white along the edges, white at both ends of each.
void drawBorder(Canvas& canvas, const ChartLayout& at) {
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

void drawGradients(Canvas& canvas, const ChartLayout& at) {
    canvas.fillGradient(
        at.hueBand, {{255, 0, 0}, {255, 255, 0}, {0, 255, 0}, {0, 255, 255}, {0, 0, 255}, {255, 0, 255}, {255, 0, 0}});
    canvas.fillGradient(at.greyBand, {black, white});
}

/// A cross through the exact centre, as many pixels wide as centres the lines: odd for odd sizes.
void drawCentreCross(Canvas& canvas, const ChartLayout& at, double length) {
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
void drawStar(Canvas& canvas, const ChartLayout& at) {
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
void drawGratings(Canvas& canvas, const ChartLayout& at) {
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

void drawPatches(Canvas& canvas, const ChartLayout& at) {
    for (const ChartPatch& patch : chartPatches(at))
        canvas.fill(patch.area, patch.colour);
    // The wedge's whole stops are numbered, below the middles of its steps.
    for (int step = 0; step + 1 < wedgeStepCount; step += 2) {
        const ChartPatch patch = wedgeStep(at, step);
        const std::string stops = step ? "-" + std::to_string(step / 2) : "0";
        drawLabel(canvas, patch.area, stops, patch.colour.red > 80 ? black : white, patch.colour);
    }
}

} // namespace

Imaging::RgbImage drawTestChart(std::uint32_t width, std::uint32_t height) {
    Imaging::requireSizeWithinLimits(width, height, "Test chart");
    Canvas canvas(width, height);
    const ChartLayout at = layOutChart(width, height);
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

} // namespace Platform::Simulated
