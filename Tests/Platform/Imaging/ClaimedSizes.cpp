#include "Tests/Platform/Imaging/ClaimedSizes.h"

#include "Platform/Imaging/PngEncoder.h"

#include <turbojpeg.h>
#include <zlib.h>

#include <algorithm>

namespace Platform::Imaging {
namespace {

void putNumber(Bytes& bytes, std::size_t offset, std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i)
        bytes.at(offset + static_cast<std::size_t>(i)) = static_cast<std::uint8_t>(number >> 8 * (size - 1 - i));
}

} // namespace

Bytes pngOfClaimedSize(std::uint32_t width, std::uint32_t height) {
    Bytes file = encodePng(smoothPicture(3, 3));
    constexpr std::size_t head = 12; // of the head's chunk type, where the checksum begins
    putNumber(file, head + 4, width, 4);
    putNumber(file, head + 8, height, 4);
    putNumber(file, head + 17, static_cast<std::uint32_t>(crc32(0, file.data() + head, 17)), 4);
    return file;
}

Bytes jpegOfClaimedSize(std::uint32_t width, std::uint32_t height) {
    Bytes file = writeJpeg(smoothPicture(16, 16), TJSAMP_444);
    const Bytes frameHead{0xFF, 0xC0};
    const auto at = std::search(file.begin(), file.end(), frameHead.begin(), frameHead.end());
    const auto offset = static_cast<std::size_t>(at - file.begin());
    putNumber(file, offset + 5, height, 2);
    putNumber(file, offset + 7, width, 2);
    return file;
}

} // namespace Platform::Imaging
