#pragma once

#include "Platform/Imaging/ImageSize.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging {

/// Reads one PNG file of any colour type and depth; see decodeImage for the rules and the errors. One thread
/// at a time.
class PngReader {
public:
    /// True for bytes that begin as a PNG file does.
    static bool recognises(std::span<const std::uint8_t> bytes);

    /// Reads the head. The bytes must outlive the reader.
    explicit PngReader(std::span<const std::uint8_t> bytes);
    ~PngReader();
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    ImageSize size() const;
    /// To be called once.
    RgbImage readPixels();

private:
    struct State;
    std::unique_ptr<State> _state;
};

} // namespace Platform::Imaging
