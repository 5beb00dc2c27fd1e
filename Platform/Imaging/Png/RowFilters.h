#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Platform::Imaging::Png {

/// Turns rows of samples into differences from their neighbours, of which few are large. For each row it takes the
/// filter type (ISO/IEC 15948, 9.2) whose differences have the smallest sum without their signs, the first of those
/// that are equal. Type 0, no filter, is no candidate: on camera pictures it never wins. The result does not depend on
/// the machine. One thread at a time.
class RowFilters {
public:
    /// Of one type each, in the order in which ties are settled.
    static constexpr std::size_t candidates = 4;
    static constexpr std::array<std::uint8_t, candidates> types{1, 2, 3, 4}; // Sub, Up, Average, Paeth

    /// `rowSize` is the number of bytes in a row, three a pixel.
    explicit RowFilters(std::size_t rowSize);

    /// Where the samples of the next row are to be written; those of the row before stay until filterRow has ended.
    std::span<std::uint8_t> nextRow();
    /// Writes the type byte and the filtered row, rowSize + 1 bytes, and goes on to the next row.
    void filterRow(std::uint8_t* out);

private:
    std::size_t _rowSize;
    std::size_t _pitch;
    std::vector<std::uint8_t> _rows;
    std::vector<std::uint8_t> _filtered;
    std::size_t _current; // where the row begins in _rows
    std::size_t _above;
};

} // namespace Platform::Imaging::Png
