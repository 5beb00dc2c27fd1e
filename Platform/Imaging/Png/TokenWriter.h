#pragma once

#include "Platform/Imaging/Png/BitWriter.h"
#include "Platform/Imaging/Png/TokenCode.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Platform::Imaging::Png {

// Bytes as deflate's tokens: literals, and runs of zeros as repetitions of the first zero. Compiled for each
// instruction set; the result is the same from all of them. 64 bytes behind `bytes` must be readable.

constexpr std::size_t tokenSlack = 64;

/// Adds what writeTokens would write.
void countTokens(std::span<const std::uint8_t> bytes, TokenCounts& counts);

/// Fills the tables of `code` from its lengths and words. No length is above longestWord.
void prepareTables(TokenCode& code);

/// Every symbol that occurs must have a word. Takes at most longestWord bits a byte.
void writeTokens(std::span<const std::uint8_t> bytes, const TokenCode& code, BitWriter& out);

} // namespace Platform::Imaging::Png
