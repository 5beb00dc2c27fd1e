#pragma once

#include <cstdint>
#include <span>

namespace Platform::Imaging::Png {

/// Gives each symbol that occurs a length of 1 to `longest` bits, the shortest to the most frequent, so that the
/// lengths make a complete prefix code; 0 to the others. Where fewer than two symbols occur, others join them, since
/// decoders refuse an incomplete code. The sum of the counts must stay below 2^32, and 2^longest must have room for all
/// symbols.
void assignLengths(std::span<const std::uint32_t> counts, unsigned longest, std::span<std::uint8_t> lengths);

/// The canonical code words of these lengths (RFC 1951, 3.2.2), turned round, as they are written from the highest bit
/// into a stream that is packed from the lowest.
void assignCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

} // namespace Platform::Imaging::Png
