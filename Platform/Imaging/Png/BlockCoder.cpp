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
constexpr std::size_t fewTokens = std::size_t{4} * shareOfSample;

// RFC 1950, 2.2: deflate with a window of 32 KB, the compressor's quickest way, and a check of both bytes.
constexpr std::uint64_t streamHead = 0x0178;
constexpr unsigned streamHeadBits = 16;

// Of a block with a code of its own: the stream's head, the block's, the words, and the end of the block with the head
// of an empty one.
std::size_t codedSizeBound(std::size_t size) {
    return 2 + blockHeaderBound + size * longestWord / 8 + 8 + BitWriter::slack;
}

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

void makeRoom(std::size_t size, CodedBlock& out) {
    if (out.roomSize >= size)
        return;
    out.room = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    out.roomSize = size;
}

/// Behind the head of the stream, if it is the first block.
BitWriter begin(BlockPlace place, CodedBlock& out) {
    BitWriter writer(out.room.get());
    if (place.first)
        writer.put(streamHead, streamHeadBits);
    return writer;
}

void writeStored(std::span<const std::uint8_t> bytes, BlockPlace place, CodedBlock& out) {
    BitWriter writer = begin(place, out);
    std::uint8_t* end = nullptr;
    do {
        const auto part = bytes.first(std::min(bytes.size(), storedBlockSize));
        bytes = bytes.subspan(part.size());
        writeStoredHeader(part.size(), place.last && bytes.empty(), writer);
        end = std::ranges::copy(part, writer.end()).out;
        writer = BitWriter(end);
    } while (!bytes.empty());
    out.size = static_cast<std::size_t>(end - out.room.get());
}

} // namespace

void BlockCoder::code(std::span<const std::uint8_t> bytes, BlockPlace place, CodedBlock& out) {
    makeRoom(codedSizeBound(bytes.size()), out);
    makeCode(bytes);
    BitWriter writer = begin(place, out);
    writeCodedHeader(_code->lengths, place.last, writer);
    writeTokens(bytes, *_code, writer);
    writer.put(_code->words[endOfBlock], _code->lengths[endOfBlock]);
    if (place.last)
        writer.fillByte();
    else if (writer.pendingCount() > 0)
        writeStoredHeader(0, false, writer); // an empty block, which ends with a whole byte
    out.size = static_cast<std::size_t>(writer.end() - out.room.get());
    if (out.size > storedSize(bytes.size()))
        writeStored(bytes, place, out);
    out.adler = libdeflate_adler32(1, bytes.data(), bytes.size());
}

void BlockCoder::makeCode(std::span<const std::uint8_t> bytes) {
    std::array<std::uint32_t, tokenSymbols> counts = countsOf(bytes);
    counts[endOfBlock] = 1;
    assignLengths(counts, longestWord, _code->lengths);
    assignCodes(_code->lengths, _code->words);
    prepareTables(*_code);
}

} // namespace Platform::Imaging::Png
