#include "Platform/Imaging/Png/PngWriter.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace Platform::Imaging::Png {
namespace {

// Small enough to stay in a second-level cache together with what becomes of it, and to follow a picture's changes;
// large enough for what its code takes.
constexpr std::size_t blockSize = 256 * 1024;

using namespace std::string_view_literals;

constexpr std::string_view signature = "\x89PNG\r\n\x1A\n"sv;
constexpr std::array<std::uint8_t, 5> format{8, 2, 0, 0, 0}; // bits, RGB, and the one way to compress, filter and order

void appendNumber(std::vector<std::uint8_t>& file, std::size_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        file.push_back(static_cast<std::uint8_t>(number >> shift));
}

/// A chunk is its size, its type, its data, and a checksum of both. Returns where it begins.
std::size_t beginChunk(std::vector<std::uint8_t>& file, std::string_view type) {
    const std::size_t chunk = file.size();
    appendNumber(file, 0);
    file.insert(file.end(), type.begin(), type.end());
    return chunk;
}

void endChunk(std::vector<std::uint8_t>& file, std::size_t chunk) {
    const std::size_t typeAt = chunk + 4;
    const std::size_t size = file.size() - typeAt - 4;
    for (std::size_t i = 0; i < 4; ++i)
        file[chunk + i] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
    appendNumber(file, libdeflate_crc32(0, file.data() + typeAt, file.size() - typeAt));
}

} // namespace

PngWriter::PngWriter(std::uint32_t width, std::uint32_t height)
    : _filters(std::size_t{3} * width), _rowsLeft(height), _filteredSize(std::size_t{3} * width + 1),
      _block(blockSize + _filteredSize + BlockCoder::slack) {
    constexpr std::size_t otherParts = 1000;
    const std::size_t filtered = _filteredSize * height;
    // More than any file has. Pages of the reserve that are never written to take no memory.
    _file.reserve(filtered + filtered / 1000 + otherParts);

    std::ranges::copy(signature, std::back_inserter(_file));
    const std::size_t header = beginChunk(_file, "IHDR");
    appendNumber(_file, width);
    appendNumber(_file, height);
    _file.insert(_file.end(), format.begin(), format.end());
    endChunk(_file, header);
}

void PngWriter::writeRow() {
    _filters.filterRow(_block.data() + _blockFill);
    _blockFill += _filteredSize;
    --_rowsLeft;
    if (_blockFill >= blockSize || _rowsLeft == 0) {
        const std::size_t data = beginChunk(_file, "IDAT");
        _stream.writeBlock({_block.data(), _blockFill}, _rowsLeft == 0, _file);
        endChunk(_file, data);
        _blockFill = 0;
    }
}

std::vector<std::uint8_t> PngWriter::takeFile() {
    endChunk(_file, beginChunk(_file, "IEND"));
    return std::exchange(_file, {});
}

} // namespace Platform::Imaging::Png
