#include "Platform/Imaging/Canvas.h"

#include "Platform/Imaging/ImagingError.h"

#include <cairo.h>
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>

#include <numbers>
#include <string>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

// A pixel of a surface is a word 0xXXRRGGBB, which libyuv calls ARGB; its RAW is R, G, B in memory.

namespace Platform::Imaging {
namespace {

constexpr std::uint32_t maxCanvasSide = 32767; // of cairo's image surfaces
constexpr double sampleMax = 255;
constexpr double fullTurn = 2 * std::numbers::pi;

void requireSuccess(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS)
        raise(winrt::result::outOfMemory, std::string("Drawing: ") + cairo_status_to_string(status));
}

// What the font library keeps for the life of the process it refers to by offsets, which a leak check does not
// see as references: one of these around its calls keeps the check from reporting it.
#ifdef __SANITIZE_ADDRESS__
using LeakCheckPause = __lsan::ScopedDisabler;
#else
struct LeakCheckPause {};
#endif

void selectFont(cairo_t* context, double size) {
    cairo_select_font_face(context, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
}

void setColour(cairo_t* context, Colour colour) {
    cairo_set_source_rgb(context, colour.red / sampleMax, colour.green / sampleMax, colour.blue / sampleMax);
}

void addRectangle(cairo_t* context, const Rectangle& area) {
    cairo_rectangle(context, area.x, area.y, area.width, area.height);
}

} // namespace

void Canvas::Deleter::operator()(_cairo* context) const { cairo_destroy(context); }
void Canvas::Deleter::operator()(_cairo_surface* surface) const { cairo_surface_destroy(surface); }
void Canvas::Deleter::operator()(_cairo_pattern* pattern) const { cairo_pattern_destroy(pattern); }

Canvas::Canvas(std::uint32_t width, std::uint32_t height) {
    if (width == 0 || height == 0 || width > maxCanvasSide || height > maxCanvasSide)
        raise(winrt::result::invalidArgument,
              "Drawing: a picture of " + std::to_string(width) + "x" + std::to_string(height) + " is not supported");
    _surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)));
    _context.reset(cairo_create(_surface.get()));
    requireSuccess(cairo_status(_context.get()));
}

void Canvas::fill(const Rectangle& area, Colour colour) {
    if (area.isEmpty())
        return;
    addRectangle(_context.get(), area);
    fillPath(colour);
}

void Canvas::fillGradient(const Rectangle& area, const std::vector<Colour>& colours) {
    if (area.isEmpty() || colours.size() < 2)
        return;
    // The outer colours are reached in the middle of the outermost columns.
    const Pointer<_cairo_pattern> pattern(
        cairo_pattern_create_linear(area.x + 0.5, area.y, area.right() - 0.5, area.y));
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const double offset = static_cast<double>(i) / static_cast<double>(colours.size() - 1);
        cairo_pattern_add_color_stop_rgb(pattern.get(), offset, colours[i].red / sampleMax,
                                         colours[i].green / sampleMax, colours[i].blue / sampleMax);
    }
    addRectangle(_context.get(), area);
    cairo_set_source(_context.get(), pattern.get());
    cairo_fill(_context.get());
}

void Canvas::fillPolygon(const std::vector<Point>& corners, Colour colour) {
    for (const Point& corner : corners)
        cairo_line_to(_context.get(), corner.x, corner.y);
    fillPath(colour);
}

void Canvas::fillCircle(Point centre, double radius, Colour colour) {
    if (radius <= 0)
        return;
    cairo_arc(_context.get(), centre.x, centre.y, radius, 0, fullTurn);
    fillPath(colour);
}

void Canvas::strokeCircle(Point centre, double radius, double lineWidth, Colour colour) {
    if (radius <= 0)
        return;
    cairo_arc(_context.get(), centre.x, centre.y, radius, 0, fullTurn);
    cairo_set_line_width(_context.get(), lineWidth);
    setColour(_context.get(), colour);
    cairo_stroke(_context.get());
}

void Canvas::drawImage(const Rectangle& area, const RgbImage& image) {
    requirePixels(image, "Drawing");
    if (area.isEmpty())
        return;
    const Canvas source(image.width, image.height);
    libyuv::RAWToARGB(image.pixels.data(), static_cast<int>(3 * image.width),
                      cairo_image_surface_get_data(source._surface.get()),
                      cairo_image_surface_get_stride(source._surface.get()), static_cast<int>(image.width),
                      static_cast<int>(image.height));
    cairo_surface_mark_dirty(source._surface.get());
    const Pointer<_cairo> context(cairo_create(_surface.get()));
    addRectangle(context.get(), area);
    cairo_clip(context.get());
    cairo_translate(context.get(), area.x, area.y);
    cairo_scale(context.get(), static_cast<double>(area.width) / image.width,
                static_cast<double>(area.height) / image.height);
    cairo_set_source_surface(context.get(), source._surface.get(), 0, 0);
    // Averages when it shrinks, interpolates when it enlarges; beyond the edges the edge's own pixels count.
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
    cairo_paint(context.get());
    requireSuccess(cairo_status(context.get()));
}

void Canvas::drawText(const Rectangle& area, Point start, double size, const std::string& text, Colour colour) {
    [[maybe_unused]] const LeakCheckPause pause;
    // Text that is not well-formed puts its context into an error state for good: so each has its own.
    const Pointer<_cairo> context(cairo_create(_surface.get()));
    addRectangle(context.get(), area);
    cairo_clip(context.get());
    selectFont(context.get(), size);
    setColour(context.get(), colour);
    cairo_move_to(context.get(), start.x, start.y);
    cairo_show_text(context.get(), text.c_str());
}

double Canvas::textWidth(double size, const std::string& text) const {
    [[maybe_unused]] const LeakCheckPause pause;
    const Pointer<_cairo> context(cairo_create(_surface.get()));
    selectFont(context.get(), size);
    cairo_text_extents_t extents{};
    cairo_text_extents(context.get(), text.c_str(), &extents);
    return extents.x_advance;
}

RgbImage Canvas::toImage() const {
    const int width = cairo_image_surface_get_width(_surface.get());
    const int height = cairo_image_surface_get_height(_surface.get());
    RgbImage image{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
    image.pixels.resize(std::size_t{3} * image.width * image.height);
    cairo_surface_flush(_surface.get());
    libyuv::ARGBToRAW(cairo_image_surface_get_data(_surface.get()), cairo_image_surface_get_stride(_surface.get()),
                      image.pixels.data(), 3 * width, width, height);
    return image;
}

void Canvas::fillPath(Colour colour) {
    setColour(_context.get(), colour);
    cairo_fill(_context.get());
}

} // namespace Platform::Imaging

#ifdef __SANITIZE_THREAD__
// Both libraries are safe to use from several threads, but pass blocks of memory between them by atomic
// operations of their own, which the check does not see.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libcairo.so\ncalled_from_lib:libfontconfig.so\n";
}
#endif
