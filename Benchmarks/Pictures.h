#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Benchmarks {

struct Picture {
    std::string name;
    Platform::Imaging::RgbImage image;
};

/// What cameras see, drawn: scenes of many and of few edges with a sensor's noise, weak and strong, and the test chart.
/// The same ones each time.
std::vector<Picture> drawnPictures(std::uint32_t width, std::uint32_t height);

/// A PPM file (P6, 8 bits), and its name. Throws std::runtime_error for one that is damaged.
Picture readPicture(const std::filesystem::path& file);
/// Throws std::runtime_error where it cannot be written.
void writePpm(const Platform::Imaging::RgbImage& image, const std::filesystem::path& file);

/// The PPM files of a folder by their names. Throws std::runtime_error for one that is damaged.
std::vector<Picture> picturesIn(const std::filesystem::path& folder);

} // namespace Benchmarks
