#include "Benchmarks/OtherEncoders.h"

#include "Platform/Imaging/Png/RowFilters.h"

#include <isa-l/igzip_lib.h>
#include <png.h>
#include <spng.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Benchmarks {
namespace {

void require(bool holds, const char* text) {
    if (!holds)
        throw std::runtime_error(text);
}

std::size_t rowSizeOf(const RgbImage& image) { return std::size_t{3} * image.width; }

std::size_t sizeBound(const RgbImage& image) {
    const std::size_t filtered = (rowSizeOf(image) + 1) * image.height;
    return filtered + filtered / 8 + 1000;
}

void append(png_structp png, png_bytep bytes, std::size_t count) {
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

[[noreturn]] void fail(png_structp, png_const_charp text) { throw std::runtime_error(text); }

struct QuickSettings {
    int filter;
    int strategy;
    int level;
};

Bytes libpngWith(const RgbImage& image, const std::optional<QuickSettings>& settings) {
    Bytes file;
    file.reserve(sizeBound(image));
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &fail, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, &append, nullptr);
    if (settings) {
        png_set_filter(png, PNG_FILTER_TYPE_BASE, settings->filter);
        png_set_compression_strategy(png, settings->strategy);
        png_set_compression_level(png, settings->level);
    }
    png_set_IHDR(png, info, image.width, image.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::uint32_t y = 0; y < image.height; ++y)
        png_write_row(png, image.pixels.data() + y * rowSizeOf(image));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

void appendNumber(Bytes& file, std::size_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        file.push_back(static_cast<std::uint8_t>(number >> shift));
}

void appendChunk(Bytes& file, std::string_view type, const Bytes& data) {
    appendNumber(file, data.size());
    const std::size_t begin = file.size();
    file.insert(file.end(), type.begin(), type.end());
    file.insert(file.end(), data.begin(), data.end());
    appendNumber(file, crc32_z(0, file.data() + begin, file.size() - begin));
}

Bytes isalStream(Bytes filtered, std::size_t bound) {
    Bytes level(ISAL_DEF_LVL1_DEFAULT);
    Bytes out(bound);
    isal_zstream stream;
    isal_deflate_init(&stream);
    stream.gzip_flag = IGZIP_ZLIB;
    stream.level = 1;
    stream.level_buf = level.data();
    stream.level_buf_size = ISAL_DEF_LVL1_DEFAULT;
    stream.end_of_stream = 1;
    stream.next_in = filtered.data();
    stream.avail_in = static_cast<std::uint32_t>(filtered.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<std::uint32_t>(out.size());
    require(isal_deflate(&stream) == COMP_OK && stream.avail_in == 0, "ISA-L failed");
    out.resize(stream.total_out);
    return out;
}

} // namespace

Bytes libpngDefault(const RgbImage& image) { return libpngWith(image, std::nullopt); }

Bytes libpngRuns(const RgbImage& image) { return libpngWith(image, QuickSettings{PNG_FILTER_UP, Z_RLE, 1}); }

Bytes spngDefault(const RgbImage& image) {
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(SPNG_CTX_ENCODER), &spng_ctx_free);
    spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1);
    spng_ihdr header{image.width, image.height, 8, SPNG_COLOR_TYPE_TRUECOLOR, 0, 0, SPNG_INTERLACE_NONE};
    spng_set_ihdr(context.get(), &header);
    const int result =
        spng_encode_image(context.get(), image.pixels.data(), image.pixels.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    require(result == 0, spng_strerror(result));
    std::size_t size = 0;
    int error = 0;
    const std::unique_ptr<void, void (*)(void*)> file(spng_get_png_buffer(context.get(), &size, &error), &std::free);
    require(error == 0, spng_strerror(error));
    const auto* bytes = static_cast<const std::uint8_t*>(file.get());
    return Bytes(bytes, bytes + size);
}

Bytes isalOnOurRows(const RgbImage& image) {
    Platform::Imaging::Png::RowFilters filters(rowSizeOf(image));
    Bytes filtered((rowSizeOf(image) + 1) * image.height);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::copy_n(image.pixels.data() + y * rowSizeOf(image), rowSizeOf(image), filters.nextRow().data());
        filters.filterRow(filtered.data() + y * (rowSizeOf(image) + 1));
    }
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    file.reserve(sizeBound(image));
    Bytes header;
    appendNumber(header, image.width);
    appendNumber(header, image.height);
    header.insert(header.end(), {8, 2, 0, 0, 0});
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", isalStream(std::move(filtered), sizeBound(image)));
    appendChunk(file, "IEND", {});
    return file;
}

} // namespace Benchmarks
