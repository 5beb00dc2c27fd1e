#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <png.h>
#include <zlib.h>

#include <stdexcept>

namespace Platform::Imaging::Png {
namespace {

std::uint32_t numberAt(const Bytes& file, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | file.at(offset + i);
    return number;
}

void require(bool holds, const char* text) {
    if (!holds)
        throw std::runtime_error(text);
}

} // namespace

Bytes inflated(const Bytes& stream, int windowBits) {
    z_stream zlib{};
    require(inflateInit2(&zlib, windowBits) == Z_OK, "zlib did not begin");
    Bytes rest = stream; // zlib asks for what it may change, and does not
    zlib.next_in = rest.data();
    zlib.avail_in = static_cast<uInt>(rest.size());
    Bytes bytes;
    int result = Z_OK;
    while (result == Z_OK) {
        Bytes part(1 << 16);
        zlib.next_out = part.data();
        zlib.avail_out = static_cast<uInt>(part.size());
        result = inflate(&zlib, Z_NO_FLUSH);
        bytes.insert(bytes.end(), part.begin(), part.end() - zlib.avail_out);
    }
    const std::string message = zlib.msg ? zlib.msg : "the stream does not end";
    const uInt left = zlib.avail_in;
    inflateEnd(&zlib);
    require(result == Z_STREAM_END, message.c_str());
    require(left == 0, "bytes are left behind the stream");
    return bytes;
}

Bytes pixelsOf(const Bytes& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    require(png_image_begin_read_from_memory(&image, file.data(), file.size()) != 0, image.message);
    image.format = PNG_FORMAT_RGB;
    Bytes pixels(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr);
    png_image_free(&image);
    require(image.warning_or_error == 0, image.message);
    return pixels;
}

UnpackedPng unpacked(const Bytes& file) {
    UnpackedPng png;
    Bytes data;
    for (std::size_t at = 8; at < file.size();) {
        const std::size_t size = numberAt(file, at);
        require(size <= file.size() - at - 12, "a chunk goes beyond the file");
        const std::uint8_t* type = file.data() + at + 4;
        require(crc32(0, type, static_cast<uInt>(size + 4)) == numberAt(file, at + 8 + size), "a checksum is wrong");
        png.chunkTypes.emplace_back(type, type + 4);
        if (png.chunkTypes.back() == "IDAT")
            data.insert(data.end(), type + 4, type + 4 + size);
        at += 12 + size;
    }
    png.filteredRows = inflated(data);
    return png;
}

} // namespace Platform::Imaging::Png
