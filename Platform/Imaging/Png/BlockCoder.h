#pragma once

#include "Platform/Imaging/Png/BitWriter.h"
#include "Platform/Imaging/Png/TokenCode.h"
#include "Platform/Imaging/Png/TokenWriter.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging::Png {

/// Where a block is in its stream.
struct BlockPlace {
    bool first = false;
    bool last = false;
};

/// What becomes of a block. The room is kept from one to the next.
struct CodedBlock {
    std::span<const std::uint8_t> bytes() const { return {room.get(), size}; }

    std::unique_ptr<std::uint8_t[]> room; // what is not written to takes no memory
    std::size_t roomSize = 0;
    std::size_t size = 0;
    /// The Adler-32 checksum of what has been coded.
    std::uint32_t adler = 1;
};

/// Filtered rows as a zlib stream (RFC 1950), block by block, each with a code made for it from a sample of its bytes.
/// Runs of zeros are the only repetitions: between the differences of noisy samples others are rare, and to look for
/// them takes most of an ordinary encoder's time. A block that a code would make larger is stored. No block needs any
/// other one: each ends with a whole byte. One thread at a time.
class BlockCoder {
public:
    /// What has to be readable behind the bytes of a block.
    static constexpr std::size_t slack = tokenSlack;

    /// At least one byte, and fewer than 2^31. Behind what becomes of the last block belongs the checksum of all that
    /// has been coded, in four bytes, the highest first.
    void code(std::span<const std::uint8_t> bytes, BlockPlace place, CodedBlock& out);

private:
    void makeCode(std::span<const std::uint8_t> bytes);

    std::unique_ptr<TokenCode> _code{new TokenCode}; // large; its tables are filled later
};

} // namespace Platform::Imaging::Png
