#pragma once

#include "Platform/Imaging/Png/BitWriter.h"
#include "Platform/Imaging/Png/TokenCode.h"
#include "Platform/Imaging/Png/TokenWriter.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Platform::Imaging::Png {

/// Filtered rows as a zlib stream (RFC 1950), block by block, each with a code made for it from a sample of its bytes.
/// Runs of zeros are the only repetitions: between the differences of noisy samples others are rare, and to look for
/// them takes most of an ordinary encoder's time. A block that a code would make larger is stored. One thread at a
/// time.
class BlockCoder {
public:
    /// What has to be readable behind the bytes of a block.
    static constexpr std::size_t slack = tokenSlack;

    /// Appends to `out` what becomes of the next block, but for the bits that do not fill a byte yet. The last block
    /// ends the stream. At least one byte, and fewer than 2^31.
    void writeBlock(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out);

private:
    void makeCode(std::span<const std::uint8_t> bytes);
    BitWriter writeCoded(std::span<const std::uint8_t> bytes, bool last);
    void appendStored(std::span<const std::uint8_t> bytes, bool last, std::vector<std::uint8_t>& out);
    BitWriter resume();
    void append(const BitWriter& writer, std::vector<std::uint8_t>& out);

    // RFC 1950, 2.2: deflate with a window of 32 KB, the compressor's quickest way, and a check of both bytes.
    static constexpr std::uint64_t head = 0x0178;
    static constexpr unsigned headBits = 16;

    std::vector<std::uint8_t> _coded;
    std::unique_ptr<TokenCode> _code{new TokenCode}; // large; its tables are filled later
    std::uint32_t _adler = 1;                        // of no bytes
    std::uint64_t _pending = head;                   // what has to be written before the next block
    unsigned _pendingCount = headBits;
};

} // namespace Platform::Imaging::Png
