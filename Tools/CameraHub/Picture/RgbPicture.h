#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace CommandLine {

/// 8 bits a colour, row by row from the top, without padding.
struct RgbPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples;
};

/// The bytes are no PNG file that can be shown; what() says why.
class BrokenPicture : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws BrokenPicture. Any thread.
RgbPicture decodePng(std::span<const std::uint8_t> png);

} // namespace CommandLine
