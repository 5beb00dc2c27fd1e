#pragma once

#include "Tests/Platform/Imaging/EncodedPictures.h"

#include <string>
#include <vector>

namespace Platform::Imaging::Png {

/// The whole of a stream by zlib, which has to end with the last byte; windowBits as zlib has it, -15 for deflate
/// alone. Throws std::runtime_error for any other.
Bytes inflated(const Bytes& stream, int windowBits = 15);

/// The pixels of a file by libpng, R, G, B. Throws std::runtime_error, also for what libpng only warns of.
Bytes pixelsOf(const Bytes& file);

struct UnpackedPng {
    std::vector<std::string> chunkTypes;
    Bytes filteredRows;
};

/// Throws std::runtime_error where a chunk's checksum or the stream of data is wrong.
UnpackedPng unpacked(const Bytes& file);

} // namespace Platform::Imaging::Png
