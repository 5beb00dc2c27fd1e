#pragma once

#include "Platform/Imaging/PictureRows.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging {

/// Reads one frame of a Motion JPEG stream. As decodeImage, but for what cameras do: the Huffman tables may be missing
/// (the standard ones are meant then), and a few stray bytes before or in place of the end mark, or any behind it, are
/// no damage. Raises winrt::hresult_error for data that is damaged or ends early. One thread at a time.
class MotionJpegReader final : public PictureRows {
public:
    /// Reads the head. The bytes must outlive the reader.
    explicit MotionJpegReader(std::span<const std::uint8_t> bytes);
    ~MotionJpegReader() override;

    void read(std::uint8_t* row) override;

private:
    struct State;

    explicit MotionJpegReader(std::unique_ptr<State> state);
    static std::unique_ptr<State> readHead(std::span<const std::uint8_t> bytes);

    const std::unique_ptr<State> _state;
};

} // namespace Platform::Imaging
