#pragma once

#include "Benchmarks/Pictures.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Benchmarks {

/// How our PNG encoder does beside another one, and what it is to reach.
struct Figure {
    std::string what;
    std::string reference; // which is 1
    double ratio = 0;
    double must = 0;
    /// Above `must` where more is better, and below where less is.
    double stretch = 0;

    bool meets(double bound) const { return stretch > must ? ratio >= bound : ratio <= bound; }
};

/// Speed and size on one of the drawn pictures, of the width of a video or of 12 megapixels. Takes seconds for a
/// picture of a video's size, and five times as long for the others. Throws std::runtime_error for a file that has
/// other pixels, and one that is not the same from two threads.
std::vector<Figure> figuresOf(const Picture& picture);

/// The instructions of `program --once ENCODER FILE`, counted by valgrind on its processor, which has AVX2; none where
/// there is no valgrind.
std::vector<Figure> instructionsOf(const std::filesystem::path& program, const Picture& picture);

} // namespace Benchmarks
