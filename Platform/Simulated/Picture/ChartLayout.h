#pragma once

#include "Platform/Imaging/Canvas.h"

#include <cstdint>
#include <vector>

namespace Platform::Simulated {

/// A rectangle of one exact colour in the test chart, to the last pixel around its middle.
struct ChartPatch {
    Imaging::Rectangle area;
    Imaging::Colour colour;
};

/// Where things are in a test chart of one size; in pixels.
struct ChartLayout {
    int gap;     // between the large parts
    int cellGap; // between the cells of a panel
    int border;
    Imaging::Rectangle content; // all but the caption
    Imaging::Point centre;      // of the whole picture
    double starRadius;
    Imaging::Rectangle hueBand;
    Imaging::Rectangle greyBand;
    Imaging::Rectangle leftPanel;
    Imaging::Rectangle rightPanel;
    Imaging::Rectangle wedge;
};

/// `width` and `height`: any size of a picture; in a very small one some of the areas are empty. Any thread.
ChartLayout layOutChart(std::uint32_t width, std::uint32_t height);

/// The rows of the panels beside the star.
constexpr int panelRows = 6;

/// One cell of an area that is cut into equal columns and rows; it may span several rows.
Imaging::Rectangle cellOf(const Imaging::Rectangle& area, int gap, int columns, int column, int rows, int row,
                          int rowSpan = 1);

/// The steps of the grey wedge: the first is white, two are a stop down, the last is black.
constexpr int wedgeStepCount = 14;
/// The area may be empty.
ChartPatch wedgeStep(const ChartLayout& at, int step);

/// The patches of known colour: colours first, then the grey steps from white to black. Empty ones, at very small
/// sizes, are left out.
std::vector<ChartPatch> chartPatches(const ChartLayout& at);
/// Those of the chart of that size.
std::vector<ChartPatch> chartPatches(std::uint32_t width, std::uint32_t height);

} // namespace Platform::Simulated
