#pragma once

#include "Platform/Imaging/ImageSize.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging {

/// Reads one frame of a Motion JPEG stream. As decodeImage, but for what cameras do: the Huffman tables may be missing
/// (the standard ones are meant then), and a few stray bytes before or in place of the end mark, or any behind it, are
/// no damage. Raises winrt::hresult_error for data that is damaged or ends early. One thread at a time.
class MotionJpegReader {
public:
    /// Reads the head. The bytes must outlive the reader.
    explicit MotionJpegReader(std::span<const std::uint8_t> bytes);
    ~MotionJpegReader();
    MotionJpegReader(const MotionJpegReader&) = delete;
    MotionJpegReader& operator=(const MotionJpegReader&) = delete;

    ImageSize size() const;
    /// To be called once.
    RgbImage readPixels();

private:
    struct State;
    std::unique_ptr<State> _state;
};

} // namespace Platform::Imaging
