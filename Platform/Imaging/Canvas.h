#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The names that cairo has given them.
// NOLINTBEGIN(bugprone-reserved-identifier)
struct _cairo;
struct _cairo_pattern;
struct _cairo_surface;
// NOLINTEND(bugprone-reserved-identifier)

namespace Platform::Imaging {

/// Samples as they are stored in an RgbImage.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour&) const = default;
};

/// In pixels, from the upper left corner.
struct Point {
    double x = 0;
    double y = 0;
};

/// Whole pixels, from the upper left corner; empty unless both sides are above 0.
struct Rectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    int right() const { return x + width; }
    int bottom() const { return y + height; }
};

/// A drawing surface, black at first. Rectangles have exact edges, everything else is smoothed. What lies
/// outside the surface, and what is empty, is not drawn. One thread at a time.
class Canvas {
public:
    /// Raises winrt::hresult_error for sides of 0 or above 32767, the most that the library draws on.
    Canvas(std::uint32_t width, std::uint32_t height);

    void fill(const Rectangle& area, Colour colour);
    /// Colours from the left edge to the right one, at equal distances.
    void fillGradient(const Rectangle& area, const std::vector<Colour>& colours);
    void fillPolygon(const std::vector<Point>& corners, Colour colour);
    void fillCircle(Point centre, double radius, Colour colour);
    void strokeCircle(Point centre, double radius, double lineWidth, Colour colour);

    /// Fills the area with the whole picture, scaled to it.
    void drawImage(const Rectangle& area, const RgbImage& image);

    /// One line of UTF-8 text, its baseline starting at `start`, letters `size` pixels high; what lies outside
    /// `area` is cut off. Text that is not well-formed is not drawn.
    void drawText(const Rectangle& area, Point start, double size, const std::string& text, Colour colour);
    /// How far a text moves the pen, in pixels; 0 for one that is not well-formed.
    double textWidth(double size, const std::string& text) const;

    RgbImage toImage() const;

private:
    // Of cairo, a context and a surface; its header stays out of ours.
    struct Deleter {
        void operator()(_cairo* context) const;
        void operator()(_cairo_pattern* pattern) const;
        void operator()(_cairo_surface* surface) const;
    };
    template <typename Object> using Pointer = std::unique_ptr<Object, Deleter>;

    void fillPath(Colour colour);

    Pointer<_cairo_surface> _surface;
    Pointer<_cairo> _context;
};

} // namespace Platform::Imaging
