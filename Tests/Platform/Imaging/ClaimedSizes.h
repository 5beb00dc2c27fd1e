#pragma once

#include "Tests/Platform/Imaging/EncodedPictures.h"

#include <cstdint>

// Small files that claim another size than their pixels have.

namespace Platform::Imaging {

/// The checksum of its head is right.
Bytes pngOfClaimedSize(std::uint32_t width, std::uint32_t height);
Bytes jpegOfClaimedSize(std::uint32_t width, std::uint32_t height);

} // namespace Platform::Imaging
