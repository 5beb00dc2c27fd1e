#include "Platform/Imaging/Png/BlockCoder.h"

#include "Platform/Imaging/Png/BlockHeader.h"
#include "Platform/Imaging/Png/PrefixCode.h"

#include <libdeflate.h>

#include <algorithm>
#include <numeric>

namespace Platform::Imaging::Png {
namespace {

// Of each 16 KB of a block the first 2 are counted.
constexpr std::size_t sampleSize = 2048;
constexpr std::uint32_t shareOfSample = 8;
constexpr std::size_t sampleDistance = shareOfSample * sampleSize;
// Where the sample has a token for fewer than every fourth of its bytes, a drawing, all is counted: the runs take no
// time, and what is between them differs from place to place.
constexpr std::size_t fewTokens = 4 * shareOfSample;

std::size_t codedSizeBound(std::size_t size) { return size * longestWord / 8 + blockHeaderBound + BitWriter::slack; }

std::size_t storedSize(std::size_t size) {
    return size + (size + storedBlockSize - 1) / storedBlockSize * storedHeaderSize;
}

std::array<std::uint32_t, tokenSymbols> countsOf(std::span<const std::uint8_t> bytes) {
    TokenCounts sample;
    for (std::size_t at = 0; at < bytes.size(); at += sampleDistance)
        countTokens(bytes.subspan(at, std::min(sampleSize, bytes.size() - at)), sample);
    std::array<std::uint32_t, tokenSymbols> counts = sample.total();
    const std::size_t tokens = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    if (bytes.size() <= sampleDistance || tokens < bytes.size() / fewTokens) {
        TokenCounts all;
        countTokens(bytes, all);
        return all.total();
    }
    for (std::uint32_t& count : counts) // the rest may have symbols that the sample has not
        count = shareOfSample * count + 1;
    return counts;
}

} // namespace

void BlockCoder::writeBlock(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out) {
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

void BlockCoder::makeCode(std::span<const std::uint8_t> bytes) {
    std::array<std::uint32_t, tokenSymbols> counts = countsOf(bytes);
    counts[endOfBlock] = 1;
    assignLengths(counts, longestWord, _code->lengths);
    assignCodes(_code->lengths, _code->words);
    prepareTables(*_code);
}

BitWriter BlockCoder::writeCoded(std::span<const std::uint8_t> bytes, bool last) {
    if (_coded.size() < codedSizeBound(bytes.size()))
        _coded.resize(codedSizeBound(bytes.size()));
    makeCode(bytes);
    BitWriter writer = resume();
    writeCodedHeader(_code->lengths, last, writer);
    writeTokens(bytes, *_code, writer);
    writer.put(_code->words[endOfBlock], _code->lengths[endOfBlock]);
    return writer;
}

void BlockCoder::appendStored(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out) {
    do {
        const auto part = bytes.first(std::min(bytes.size(), storedBlockSize));
        bytes = bytes.subspan(part.size());
        BitWriter writer = resume();
        writeStoredHeader(part.size(), last && bytes.empty(), writer);
        append(writer, out);
        out.insert(out.end(), part.begin(), part.end());
    } while (!bytes.empty());
}

BitWriter BlockCoder::resume() {
    BitWriter writer(_coded.data());
    writer.put(_pending, _pendingCount);
    return writer;
}

void BlockCoder::append(const BitWriter& writer, std::vector<std::uint8_t>& out) {
    out.insert(out.end(), _coded.data(), writer.end());
    _pending = writer.pending();
    _pendingCount = writer.pendingCount();
}

} // namespace Platform::Imaging::Png
