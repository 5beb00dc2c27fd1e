#pragma once

#include "Platform/Imaging/ImageSize.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>

namespace Platform::Imaging {

/// A picture that comes row by row, so that nobody has to hold it whole. One thread at a time.
class PictureRows {
public:
    explicit PictureRows(ImageSize size) : _size(size) {}
    virtual ~PictureRows() = default;
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;

    ImageSize size() const { return _size; }

    /// Writes the next row, the first at the top: 3 * width samples, R, G, B, and nothing behind them. It is called
    /// `height` times at most. Raises winrt::hresult_error where what the picture is made of turns out to be damaged.
    virtual void read(std::uint8_t* row) = 0;

private:
    const ImageSize _size;
};

/// The whole picture, of which no row has been read yet. Raises what those raise.
RgbImage readPicture(PictureRows& rows);

} // namespace Platform::Imaging
