#pragma once

#include "Tools/CameraHub/Picture/RgbPicture.h"

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace CommandLine {

/// Small pictures in rows, each above its caption.
class ContactSheet {
public:
    /// The picture has at least one pixel; only a small copy is kept. The caption is UTF-8. Throws std::runtime_error
    /// for a picture that is too large, or where there is no memory.
    void add(const RgbPicture& picture, std::string caption);

    /// A PNG file of all that were added, at least one. Throws std::runtime_error where there is no memory for it.
    std::vector<std::uint8_t> png() const;

private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* context) const { cairo_destroy(context); }
    };
    using Surface = std::unique_ptr<cairo_surface_t, Destroy>;
    using Context = std::unique_ptr<cairo_t, Destroy>;
    struct Cell {
        Surface picture;
        std::string caption;
    };

    static Surface makeSurface(int width, int height);
    static Surface surfaceOf(const RgbPicture& picture);
    static void drawCell(cairo_t* context, const Cell& cell, int left, int top);

    std::vector<Cell> _cells;
};

} // namespace CommandLine
