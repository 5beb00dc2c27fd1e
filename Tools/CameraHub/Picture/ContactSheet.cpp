#include "Tools/CameraHub/Picture/ContactSheet.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace CommandLine {
namespace {

// In pixels.
constexpr int cellWidth = 320;
constexpr int cellHeight = 240;
constexpr int captionHeight = 30;
constexpr int margin = 12;
constexpr double fontSize = 16;

void check(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(cairo_status_to_string(status));
}

// What the font library keeps for the life of the process it refers to by offsets, which a leak check does not
// see as references: one of these around its calls keeps the check from reporting it.
#ifdef __SANITIZE_ADDRESS__
using LeakCheckPause = __lsan::ScopedDisabler;
#else
struct LeakCheckPause {};
#endif

cairo_status_t append(void* file, const unsigned char* bytes, unsigned int count) {
    auto& vector = *static_cast<std::vector<std::uint8_t>*>(file);
    vector.insert(vector.end(), bytes, bytes + count);
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

ContactSheet::Surface ContactSheet::makeSurface(int width, int height) {
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    check(cairo_surface_status(surface.get()));
    return surface;
}

ContactSheet::Surface ContactSheet::surfaceOf(const RgbPicture& picture) {
    Surface surface = makeSurface(picture.width, picture.height);
    cairo_surface_flush(surface.get());
    unsigned char* row = cairo_image_surface_get_data(surface.get());
    const std::uint8_t* sample = picture.samples.data();
    for (int y = 0; y < picture.height; ++y, row += cairo_image_surface_get_stride(surface.get())) {
        auto* const pixels = reinterpret_cast<std::uint32_t*>(row);
        for (int x = 0; x < picture.width; ++x, sample += 3)
            pixels[x] = std::uint32_t{sample[0]} << 16U | std::uint32_t{sample[1]} << 8U | sample[2];
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

void ContactSheet::add(const RgbPicture& picture, std::string caption) {
    const double scale = std::min({1.0, double{cellWidth} / picture.width, double{cellHeight} / picture.height});
    const auto scaled = [&](int size) { return std::max(1, static_cast<int>(std::lround(size * scale))); };
    Surface small = makeSurface(scaled(picture.width), scaled(picture.height));
    const Surface large = surfaceOf(picture);
    const Context context(cairo_create(small.get()));
    cairo_scale(context.get(), scale, scale);
    cairo_set_source_surface(context.get(), large.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
    cairo_paint(context.get());
    check(cairo_status(context.get()));
    _cells.push_back({std::move(small), std::move(caption)});
}

void ContactSheet::drawCell(cairo_t* context, const Cell& cell, int left, int top) {
    cairo_surface_t* const picture = cell.picture.get();
    const int inset = (cellWidth - cairo_image_surface_get_width(picture)) / 2; // whole pixels, which stay sharp
    const int drop = (cellHeight - cairo_image_surface_get_height(picture)) / 2;
    cairo_set_source_surface(context, picture, left + inset, top + drop);
    cairo_paint(context);
    cairo_text_extents_t extents;
    cairo_text_extents(context, cell.caption.c_str(), &extents);
    cairo_set_source_rgb(context, 0.9, 0.9, 0.9);
    cairo_move_to(context, left + (cellWidth - extents.x_advance) / 2, top + cellHeight + fontSize + 4);
    cairo_show_text(context, cell.caption.c_str());
}

std::vector<std::uint8_t> ContactSheet::png() const {
    const int count = static_cast<int>(_cells.size());
    const int columns = static_cast<int>(std::ceil(std::sqrt(count)));
    const int rows = (count + columns - 1) / columns;
    const Surface sheet =
        makeSurface(margin + columns * (cellWidth + margin), margin + rows * (cellHeight + captionHeight + margin));
    const Context context(cairo_create(sheet.get()));
    cairo_set_source_rgb(context.get(), 0.13, 0.13, 0.13);
    cairo_paint(context.get());
    [[maybe_unused]] const LeakCheckPause pause;
    cairo_select_font_face(context.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context.get(), fontSize);
    for (int i = 0; i < count; ++i)
        drawCell(context.get(), _cells[static_cast<std::size_t>(i)], margin + i % columns * (cellWidth + margin),
                 margin + i / columns * (cellHeight + captionHeight + margin));
    check(cairo_status(context.get()));
    std::vector<std::uint8_t> file;
    check(cairo_surface_write_to_png_stream(sheet.get(), append, &file));
    return file;
}

} // namespace CommandLine
