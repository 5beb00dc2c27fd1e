#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <vector>

namespace Benchmarks {

using Platform::Imaging::RgbImage;
using Bytes = std::vector<std::uint8_t>;

// PNG files from other libraries. All throw std::runtime_error for a call that fails.

/// libpng as it comes: the filter chosen for each row, zlib's level 6.
Bytes libpngDefault(const RgbImage& image);
/// libpng at its quickest: differences to the row above, runs alone, level 1.
Bytes libpngRuns(const RgbImage& image);
/// libspng as it comes.
Bytes spngDefault(const RgbImage& image);
/// ISA-L's level 1 on rows that our own filters have filtered.
Bytes isalOnOurRows(const RgbImage& image);

} // namespace Benchmarks
