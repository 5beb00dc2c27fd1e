#include "Platform/Imaging/Png/ZlibStream.h"

#include "Platform/Imaging/Png/BlockHeader.h"
#include "Platform/Imaging/Png/PrefixCode.h"

#include <libdeflate.h>

#include <algorithm>

namespace Platform::Imaging::Png {
namespace {

// Of each 16 KB of a block the first 2 are counted; a block that has no more than that is counted whole.
constexpr std::size_t sampleSize = 2048;
constexpr std::uint32_t shareOfSample = 8;
constexpr std::size_t sampleDistance = shareOfSample * sampleSize;

std::size_t codedSizeBound(std::size_t size) { return size * longestWord / 8 + blockHeaderBound + BitWriter::slack; }

std::size_t storedSize(std::size_t size) {
    return size + (size + storedBlockSize - 1) / storedBlockSize * storedHeaderSize;
}

} // namespace

void ZlibStream::writeBlock(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out) {
    _adler = libdeflate_adler32(_adler, bytes.data(), bytes.size());
    const BitWriter coded = writeCoded(bytes, last);
    if (static_cast<std::size_t>(coded.end() - _coded.data()) > storedSize(bytes.size()))
        appendStored(bytes, last, out);
    else
        append(coded, out);
    if (last) {
        BitWriter end = resume();
        end.fillByte();
        for (int shift = 24; shift >= 0; shift -= 8)
            end.put(_adler >> shift & 0xFF, 8);
        append(end, out);
    }
}

void ZlibStream::makeCode(std::span<const std::uint8_t> bytes) {
    TokenCounts counts;
    const bool isSampled = bytes.size() > sampleDistance;
    if (isSampled)
        for (std::size_t at = 0; at < bytes.size(); at += sampleDistance)
            countTokens(bytes.subspan(at, std::min(sampleSize, bytes.size() - at)), counts);
    else
        countTokens(bytes, counts);
    std::array<std::uint32_t, tokenSymbols> total = counts.total();
    if (isSampled) // the rest may have symbols that the sample has not
        for (std::uint32_t& count : total)
            count = shareOfSample * count + 1;
    total[endOfBlock] = 1;
    assignLengths(total, longestWord, _code->lengths);
    assignCodes(_code->lengths, _code->words);
    prepareTables(*_code);
}

BitWriter ZlibStream::writeCoded(std::span<const std::uint8_t> bytes, bool last) {
    if (_coded.size() < codedSizeBound(bytes.size()))
        _coded.resize(codedSizeBound(bytes.size()));
    makeCode(bytes);
    BitWriter writer = resume();
    writeCodedHeader(_code->lengths, last, writer);
    writeTokens(bytes, *_code, writer);
    writer.put(_code->words[endOfBlock], _code->lengths[endOfBlock]);
    return writer;
}

void ZlibStream::appendStored(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out) {
    do {
        const auto part = bytes.first(std::min(bytes.size(), storedBlockSize));
        bytes = bytes.subspan(part.size());
        BitWriter writer = resume();
        writeStoredHeader(part.size(), last && bytes.empty(), writer);
        append(writer, out);
        out.insert(out.end(), part.begin(), part.end());
    } while (!bytes.empty());
}

BitWriter ZlibStream::resume() {
    BitWriter writer(_coded.data());
    writer.put(_pending, _pendingCount);
    return writer;
}

void ZlibStream::append(const BitWriter& writer, std::vector<std::uint8_t>& out) {
    out.insert(out.end(), _coded.data(), writer.end());
    _pending = writer.pending();
    _pendingCount = writer.pendingCount();
}

} // namespace Platform::Imaging::Png
