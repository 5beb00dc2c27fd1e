#pragma once

#include "Platform/Imaging/Png/BlockQueue.h"
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
    /// Both sides are from 1 to 2^29: a chunk is to hold any row. Where the picture is large enough for two threads to
    /// pay, another one that `runBeside` has helps until the writer goes; the file is the same.
    PngWriter(std::uint32_t width, std::uint32_t height, const RunBeside& runBeside = {});

    /// Where the next row is to be written: 3 * width samples, R, G, B.
    std::span<std::uint8_t> nextRow() { return _filters.nextRow(); }
    /// Takes that row. It is called `height` times.
    void writeRow();
    /// The file, once after the last row. As writeRow, it throws std::bad_alloc where a block could not be coded.
    std::vector<std::uint8_t> takeFile();

private:
    void appendOldest();

    std::vector<std::uint8_t> _file; // the largest part comes first, so that it finds the room of the one before
    RowFilters _filters;
    std::uint32_t _rowsLeft;
    std::size_t _filteredSize;
    BlockQueue _blocks;
    std::uint32_t _adler = 1; // of no bytes
};

} // namespace Platform::Imaging::Png
