#include "Platform/Imaging/PngReader.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/PngGuard.h"

#include <cstring>
#include <string>
#include <vector>

namespace Platform::Imaging {
namespace {

void dropAncillaryData(png_structp png) {
    // Nothing but pixels is wanted; ancillary chunks are not even parsed.
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
}

void transformToRgb8(png_structp png, png_infop info) {
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    png_set_strip_alpha(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
}

} // namespace

struct PngReader::State {
    explicit State(std::span<const std::uint8_t> bytes) : unread(bytes) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, &PngMessage::onError, &PngMessage::onWarning);
        info = png ? png_create_info_struct(png) : nullptr;
    }
    ~State() { png_destroy_read_struct(&png, &info, nullptr); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    static void read(png_structp png, png_bytep bytes, std::size_t count) {
        auto& unread = static_cast<State*>(png_get_io_ptr(png))->unread;
        if (count > unread.size())
            png_error(png, "the data ends early");
        std::memcpy(bytes, unread.data(), count);
        unread = unread.subspan(count);
    }

    PngMessage message;
    std::span<const std::uint8_t> unread;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

bool PngReader::recognises(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t signatureSize = 8;
    return bytes.size() >= signatureSize && png_sig_cmp(bytes.data(), 0, signatureSize) == 0;
}

PngReader::PngReader(std::span<const std::uint8_t> bytes) : _state(std::make_unique<State>(bytes)) {
    State& state = *_state;
    if (!state.info)
        raise(winrt::result::outOfMemory, "PNG: out of memory");
    if (!runGuarded(state.png, [&state] {
            png_set_read_fn(state.png, &state, &State::read);
            // Our own limits speak with a clearer text.
            png_set_user_limits(state.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            dropAncillaryData(state.png);
            png_read_info(state.png, state.info);
        }))
        raise(winrt::result::fail, "PNG: " + std::string(state.message.text()));
    requireSizeWithinLimits(size().width, size().height, "PNG");
}

PngReader::~PngReader() = default;

ImageSize PngReader::size() const {
    return {png_get_image_width(_state->png, _state->info), png_get_image_height(_state->png, _state->info)};
}

RgbImage PngReader::readPixels() {
    State& state = *_state;
    const auto [width, height] = size();
    constexpr std::uint64_t mostPacked = 1032; // bytes that deflate can pack into one
    if (std::uint64_t{png_get_rowbytes(state.png, state.info)} * height > mostPacked * state.unread.size())
        raise(winrt::result::fail, "PNG: the data ends early"); // known without room for the picture
    RgbImage image{width, height, std::vector<std::uint8_t>(std::size_t{3} * width * height)};
    std::vector<png_bytep> rows(height);
    for (std::uint32_t y = 0; y < height; ++y)
        rows[y] = image.pixels.data() + std::size_t{3} * width * y;
    if (!runGuarded(state.png, [&state, &rows, &image] {
            transformToRgb8(state.png, state.info);
            if (png_get_rowbytes(state.png, state.info) != std::size_t{3} * image.width)
                png_error(state.png, "unexpected row size");
            png_read_image(state.png, rows.data());
            png_read_end(state.png, nullptr);
        }))
        raise(winrt::result::fail, "PNG: " + std::string(state.message.text()));
    return image;
}

} // namespace Platform::Imaging
