#pragma once

#include "Platform/Imaging/Png/BitWriter.h"
#include "Platform/Imaging/Png/TokenCode.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Platform::Imaging::Png {

/// More bytes than a header of either kind has.
constexpr std::size_t blockHeaderBound = 400;

/// The head of a block with a code of its own (RFC 1951, 3.2.7). Its second code has one word: a 0 for the distance 1.
void writeCodedHeader(std::span<const std::uint8_t, tokenSymbols> lengths, bool last, BitWriter& out);

/// The most bytes of a block that is stored as it is.
constexpr std::size_t storedBlockSize = 65535;
constexpr std::size_t storedHeaderSize = 5;

/// The head of such a block (3.2.4): the bytes follow at out.end().
void writeStoredHeader(std::size_t size, bool last, BitWriter& out);

} // namespace Platform::Imaging::Png
