#pragma once

#include "Platform/Imaging/PictureRows.h"
#include "Platform/Imaging/Png/RunBeside.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <vector>

namespace Platform::Imaging {

/// The PNG file of a picture: eight bits a sample, RGB, the same bytes for the same picture each time.
/// Raises winrt::hresult_error for a picture without pixels, beyond the limits of ImageSize.h, or whose pixels do not
/// fill its size. Any thread.
std::vector<std::uint8_t> encodePng(const RgbImage& image);

/// The file of a picture of which no row has been read yet; nothing of the picture's size is made but the file. Another
/// thread helps where there is one and the picture is large: this one reads the rows while that one codes them. Raises
/// what the rows raise. Any thread.
std::vector<std::uint8_t> encodePng(PictureRows& rows, const Png::RunBeside& runBeside = {});

} // namespace Platform::Imaging
