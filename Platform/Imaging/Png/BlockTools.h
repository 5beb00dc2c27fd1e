#pragma once

#include "Platform/Imaging/Png/BlockCoder.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Platform::Imaging::Png {

/// A block on its way into the file.
struct Block {
    std::vector<std::uint8_t> bytes; // with the slack
    std::size_t size = 0;
    BlockPlace place;
    CodedBlock coded;
    /// The CRC-32 checksum of its chunk's type and the coded bytes.
    std::uint32_t checksum = 0;
};

/// The memory in which a picture's blocks are coded. It serves one picture after the other.
struct BlockTools {
    /// At least that many blocks of at least `room` bytes, empty. Throws std::bad_alloc.
    void prepare(std::size_t count, std::size_t room);

    std::vector<Block> blocks;
    BlockCoder coder;
    std::optional<BlockCoder> otherCoder; // the second thread's, where one has come
};

/// The tools of an earlier picture, or new ones. Any thread.
std::unique_ptr<BlockTools> takeTools();

/// For the next picture: what is freed, others take pieces of, and then each picture needs new pages. Those of very
/// wide pictures are freed, and those that come while others are kept. Any thread.
void keepTools(std::unique_ptr<BlockTools> tools);

} // namespace Platform::Imaging::Png
