#pragma once

#include "Tools/CameraHub/Picture/RgbPicture.h"

#include <array>
#include <cstdint>
#include <string>

namespace CommandLine {

/// How light is spread over a picture: whether its exposure is right is seen here. Any thread.
class Histogram {
public:
    /// The picture has at least one pixel.
    explicit Histogram(const RgbPicture& picture);

    /// The share, from 0 to 1, of pixels of which a colour is at the upper end: what was brighter cannot be told.
    double tooBright() const { return _tooBright; }

    /// The share, from 0 to 1, of pixels that are entirely black.
    double tooDark() const { return _tooDark; }

    /// From black to white in so many characters (1 to 256), each a column as high as the square root of its pixels, so
    /// that small ones are seen beside a large one. A blank is a column without any pixel.
    std::string line(int columns) const;

private:
    std::array<std::uint64_t, 256> _counts{}; // by brightness
    double _tooBright = 0;
    double _tooDark = 0;
};

/// A share for people: "0 %", "< 0.01 %", "0.31 %", "12 %".
std::string shareText(double share);

} // namespace CommandLine
