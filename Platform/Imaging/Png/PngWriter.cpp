#include "Platform/Imaging/Png/PngWriter.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

namespace Platform::Imaging::Png {
namespace {

// Small enough to stay in a second-level cache together with what becomes of it, and to follow a picture's changes;
// large enough for what its code takes.
constexpr std::size_t blockSize = 256 * 1024;

// Below that, to wake another thread takes about as long as it helps.
constexpr std::size_t fewestBytesForTwo = 4 * blockSize;

using namespace std::string_view_literals;

constexpr std::string_view signature = "\x89PNG\r\n\x1A\n"sv;
constexpr std::array<std::uint8_t, 5> format{8, 2, 0, 0, 0}; // bits, RGB, and the one way to compress, filter and order

void appendNumber(std::vector<std::uint8_t>& file, std::size_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        file.push_back(static_cast<std::uint8_t>(number >> shift));
}

/// A chunk is its size, its type, its data, and a checksum of both.
void appendChunk(std::vector<std::uint8_t>& file, std::string_view type, std::span<const std::uint8_t> data) {
    appendNumber(file, data.size());
    file.insert(file.end(), type.begin(), type.end());
    file.insert(file.end(), data.begin(), data.end());
    const std::size_t checked = type.size() + data.size();
    appendNumber(file, libdeflate_crc32(0, file.data() + file.size() - checked, checked));
}

/// More than any file of such a picture has. Pages of the reserve that are never written to take no memory.
std::vector<std::uint8_t> emptyFile(std::uint32_t width, std::uint32_t height) {
    constexpr std::size_t otherParts = 1000;
    const std::size_t filtered = (std::size_t{3} * width + 1) * height;
    std::vector<std::uint8_t> file;
    file.reserve(filtered + filtered / 1000 + otherParts);
    return file;
}

} // namespace

PngWriter::PngWriter(std::uint32_t width, std::uint32_t height, const RunBeside& runBeside)
    : _file(emptyFile(width, height)), _filters(std::size_t{3} * width), _rowsLeft(height),
      _filteredSize(std::size_t{3} * width + 1),
      _blocks(blockSize + _filteredSize, _filteredSize * height < fewestBytesForTwo ? nullptr : runBeside,
              takeTools()) {
    std::ranges::copy(signature, std::back_inserter(_file));
    std::vector<std::uint8_t> header;
    appendNumber(header, width);
    appendNumber(header, height);
    header.insert(header.end(), format.begin(), format.end());
    appendChunk(_file, "IHDR", header);
    _blocks.next().place.first = true;
}

void PngWriter::writeRow() {
    Block& block = _blocks.next();
    _filters.filterRow(block.bytes.data() + block.size);
    block.size += _filteredSize;
    --_rowsLeft;
    if (block.size < blockSize && _rowsLeft > 0)
        return;
    block.place.last = _rowsLeft == 0;
    _blocks.put();
    if (_blocks.isFull())
        appendOldest();
}

void PngWriter::appendOldest() {
    const Block& block = _blocks.oldest();
    const std::span<const std::uint8_t> data = block.coded.bytes();
    const std::size_t checkSize = block.place.last ? 4 : 0;
    appendNumber(_file, data.size() + checkSize);
    _file.insert(_file.end(), dataType.begin(), dataType.end());
    _file.insert(_file.end(), data.begin(), data.end());
    _adler = static_cast<std::uint32_t>(adler32_combine(_adler, block.coded.adler, static_cast<z_off_t>(block.size)));
    if (block.place.last) // the end of the stream
        appendNumber(_file, _adler);
    appendNumber(_file, libdeflate_crc32(block.checksum, _file.data() + _file.size() - checkSize, checkSize));
    _blocks.take();
}

std::vector<std::uint8_t> PngWriter::takeFile() {
    while (!_blocks.isEmpty())
        appendOldest();
    keepTools(_blocks.close());
    appendChunk(_file, "IEND", {});
    return std::exchange(_file, {});
}

} // namespace Platform::Imaging::Png
