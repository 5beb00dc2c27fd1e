#pragma once

#include "Platform/Imaging/Png/BlockCoder.h"
#include "Platform/Imaging/Png/RowFilters.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Platform::Imaging::Png {

/// Writes a PNG file (ISO/IEC 15948) of 8-bit RGB row by row: what is between a row and the file stays in the cache.
/// No ancillary chunk: samples without one are taken as sRGB, which they are. One thread at a time.
class PngWriter {
public:
    /// Both sides are from 1 to 2^29: a chunk is to hold any row.
    PngWriter(std::uint32_t width, std::uint32_t height);

    /// Where the next row is to be written: 3 * width samples, R, G, B.
    std::span<std::uint8_t> nextRow() { return _filters.nextRow(); }
    /// Takes that row. It is called `height` times.
    void writeRow();
    /// The file, once after the last row.
    std::vector<std::uint8_t> takeFile();

private:
    RowFilters _filters;
    BlockCoder _stream;
    std::uint32_t _rowsLeft;
    std::size_t _filteredSize;
    std::vector<std::uint8_t> _block;
    std::size_t _blockFill = 0;
    std::vector<std::uint8_t> _file;
};

} // namespace Platform::Imaging::Png
