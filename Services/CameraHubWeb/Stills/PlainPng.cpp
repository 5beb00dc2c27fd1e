#include "Services/CameraHubWeb/Stills/PlainPng.h"

#include "Platform/Imaging/ImageSize.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

namespace CameraHubWeb {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t bytesPerPixel = 3;

std::uint32_t numberAt(Bytes bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24U | std::uint32_t{bytes[at + 1]} << 16U | std::uint32_t{bytes[at + 2]} << 8U |
           std::uint32_t{bytes[at + 3]};
}

struct Chunk {
    std::string_view type;
    Bytes data;
};

/// Cuts the first chunk off; none if it is damaged.
std::optional<Chunk> takeChunk(Bytes& bytes) {
    constexpr std::size_t lengthSize = 4;
    constexpr std::size_t typeSize = 4;
    constexpr std::size_t checksumSize = 4;
    if (bytes.size() < lengthSize + typeSize + checksumSize)
        return std::nullopt;
    const std::size_t length = numberAt(bytes, 0);
    if (bytes.size() - lengthSize - typeSize - checksumSize < length)
        return std::nullopt;
    const Bytes checked = bytes.subspan(lengthSize, typeSize + length);
    if (libdeflate_crc32(0, checked.data(), checked.size()) != numberAt(bytes, lengthSize + checked.size()))
        return std::nullopt;
    bytes = bytes.subspan(lengthSize + checked.size() + checksumSize);
    return Chunk{{reinterpret_cast<const char*>(checked.data()), typeSize}, checked.subspan(typeSize)};
}

/// The size of a picture of the one kind.
std::optional<Platform::Imaging::ImageSize> plainSize(const Chunk& head) {
    constexpr std::array<std::uint8_t, 5> kind{8, 2, 0, 0, 0}; // bits, RGB, the one compression, filtering, in one pass
    if (head.type != "IHDR" || head.data.size() != 8 + kind.size() ||
        !std::equal(kind.begin(), kind.end(), head.data.begin() + 8))
        return std::nullopt;
    const Platform::Imaging::ImageSize size{numberAt(head.data, 0), numberAt(head.data, 4)};
    using Platform::Imaging::maxImageSide;
    if (size.width == 0 || size.height == 0 || size.width > maxImageSide || size.height > maxImageSide ||
        std::uint64_t{size.width} * size.height > Platform::Imaging::maxImagePixels)
        return std::nullopt;
    return size;
}

/// What the rest of the file has of packed pixels; none if there is anything else in it.
std::optional<std::vector<std::uint8_t>> packedPixels(Bytes rest) {
    std::vector<std::uint8_t> packed;
    packed.reserve(rest.size());
    while (true) {
        const auto chunk = takeChunk(rest);
        if (!chunk)
            return std::nullopt;
        if (chunk->type == "IEND" && chunk->data.empty() && rest.empty())
            return packed;
        if (chunk->type != "IDAT")
            return std::nullopt;
        packed.insert(packed.end(), chunk->data.begin(), chunk->data.end());
    }
}

/// Whether it makes exactly so many bytes.
bool unpack(Bytes packed, std::span<std::uint8_t> bytes) {
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor(
        libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    if (!decompressor)
        throw std::bad_alloc();
    return libdeflate_zlib_decompress(decompressor.get(), packed.data(), packed.size(), bytes.data(), bytes.size(),
                                      nullptr) == LIBDEFLATE_SUCCESS;
}

std::uint8_t sum(std::uint8_t one, int other) { return static_cast<std::uint8_t>(one + other); }

/// The one of the three that is nearest to left + above - corner.
int nearest(int left, int above, int corner) {
    const int toLeft = std::abs(above - corner);
    const int toAbove = std::abs(left - corner);
    const int toCorner = std::abs(left + above - 2 * corner);
    if (toLeft <= toAbove && toLeft <= toCorner)
        return left;
    return toAbove <= toCorner ? above : corner;
}

/// Replaces the differences of a row by its samples: each is added to what `predict` makes of those to the left, above,
/// and above to the left.
template <typename Predict>
void undo(std::span<std::uint8_t> row, const std::uint8_t* above, const Predict& predict) {
    std::array<int, bytesPerPixel> left{};
    std::array<int, bytesPerPixel> corner{};
    for (std::size_t at = 0; at < row.size(); at += bytesPerPixel)
        for (std::size_t colour = 0; colour < bytesPerPixel; ++colour) {
            const int up = above[at + colour];
            left[colour] = row[at + colour] = sum(row[at + colour], predict(left[colour], up, corner[colour]));
            corner[colour] = up;
        }
}

/// False for a filter that there is not.
bool undoFilter(int filter, std::span<std::uint8_t> row, const std::uint8_t* above) {
    switch (filter) {
    case 0:
        return true;
    case 1:
        undo(row, above, [](int left, int, int) { return left; });
        return true;
    case 2:
        for (std::size_t at = 0; at < row.size(); ++at)
            row[at] = sum(row[at], above[at]);
        return true;
    case 3:
        undo(row, above, [](int left, int up, int) { return (left + up) / 2; });
        return true;
    case 4:
        undo(row, above, nearest);
        return true;
    default:
        return false;
    }
}

bool undoFilters(PlainPixels& pixels) {
    const std::vector<std::uint8_t> blackRow(pixels.stride() - 1);
    const std::uint8_t* above = blackRow.data();
    for (std::uint32_t y = 0; y < pixels.height; ++y) {
        std::uint8_t* const row = pixels.rows.data() + y * pixels.stride();
        if (!undoFilter(row[0], {row + 1, pixels.stride() - 1}, above))
            return false;
        above = row + 1;
    }
    return true;
}

} // namespace

std::optional<PlainPixels> readPlainPng(std::span<const std::uint8_t> png) {
    constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
    if (png.size() < signature.size() ||
        !std::equal(signature.begin(), signature.end(), png.begin(),
                    [](char one, std::uint8_t other) { return static_cast<std::uint8_t>(one) == other; }))
        return std::nullopt;
    Bytes rest = png.subspan(signature.size());
    const auto head = takeChunk(rest);
    const auto size = head ? plainSize(*head) : std::nullopt;
    const auto packed = size ? packedPixels(rest) : std::nullopt;
    if (!packed)
        return std::nullopt;
    PlainPixels pixels{size->width, size->height, {}};
    const std::size_t count = pixels.stride() * pixels.height;
    constexpr std::size_t mostPacked = 1032; // bytes that deflate can pack into one
    if (count > mostPacked * packed->size())
        return std::nullopt; // known without room for the picture
    pixels.rows.resize(count);
    if (!unpack(*packed, pixels.rows) || !undoFilters(pixels))
        return std::nullopt;
    return pixels;
}

} // namespace CameraHubWeb
