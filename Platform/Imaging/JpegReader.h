#pragma once

#include "Platform/Imaging/ImageSize.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging {

/// Reads one JPEG file, sequential or progressive, grey or colour; see decodeImage for the rules and the errors.
/// One thread at a time.
class JpegReader {
public:
    /// True for bytes that begin as a JPEG file does.
    static bool recognises(std::span<const std::uint8_t> bytes);

    /// Reads the head. The bytes must outlive the reader.
    explicit JpegReader(std::span<const std::uint8_t> bytes);

    ImageSize size() const { return _size; }
    RgbImage readPixels();

private:
    struct Deleter {
        void operator()(void* decompressor) const;
    };

    [[noreturn]] void raiseError() const;

    std::span<const std::uint8_t> _bytes;
    std::unique_ptr<void, Deleter> _decompressor;
    ImageSize _size;
};

} // namespace Platform::Imaging
