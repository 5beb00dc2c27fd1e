#include "Benchmarks/Pictures.h"

#include "Platform/Simulated/Picture/TestChart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <random>
#include <stdexcept>

namespace Benchmarks {
namespace {

using Platform::Imaging::RgbImage;

/// A number from 0 to 1 for each place.
float valueAt(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
    std::uint32_t hash = x * 0x8DA6B343U ^ y * 0xD8163841U ^ seed * 0xCB1AB31FU;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6DU;
    hash = (hash ^ hash >> 12) * 0x297A2D39U;
    return static_cast<float>((hash ^ hash >> 15) >> 8) / 16777216.0F;
}

/// Hills: values at whole numbers, smooth between.
float hills(float x, float y, std::uint32_t seed) {
    const float left = std::floor(x);
    const float top = std::floor(y);
    const auto ease = [](float t) { return t * t * (3 - 2 * t); };
    const float right = ease(x - left);
    const float down = ease(y - top);
    const auto column = static_cast<std::uint32_t>(left);
    const auto row = static_cast<std::uint32_t>(top);
    const auto mix = [](float a, float b, float t) { return a + (b - a) * t; };
    return mix(mix(valueAt(column, row, seed), valueAt(column + 1, row, seed), right),
               mix(valueAt(column, row + 1, seed), valueAt(column + 1, row + 1, seed), right), down);
}

struct Scene {
    const char* name;
    int octaves;       // how many sizes of hills, each half of the one before
    float persistence; // how high each is beside the one before
    float noise;       // of the sensor at middle grey, in steps of a sample
};

constexpr Scene scenes[] = {
    {"dense", 9, 0.75F, 3}, {"ordinary", 7, 0.55F, 1}, {"soft", 4, 0.4F, 0.8F}, {"noise", 7, 0.55F, 10}};

/// The light of the three colours at a place, from 0 to 255. Large forms are coloured, fine ones are grey.
std::array<float, 3> lightAt(const Scene& scene, float x, float y) {
    constexpr int colouredOctaves = 3;
    std::array<float, 3> light{};
    float weights = 0;
    float weight = 1;
    for (int octave = 0; octave < scene.octaves; ++octave, weight *= scene.persistence, x *= 2, y *= 2) {
        const auto seed = static_cast<std::uint32_t>(octave) * 3;
        const float grey = hills(x, y, seed);
        light[0] += weight * grey;
        light[1] += weight * (octave < colouredOctaves ? hills(x, y, seed + 1) : grey);
        light[2] += weight * (octave < colouredOctaves ? hills(x, y, seed + 2) : grey);
        weights += weight;
    }
    for (float& colour : light)
        colour *= 255 / weights;
    return light;
}

RgbImage draw(const Scene& scene, std::uint32_t width, std::uint32_t height) {
    constexpr float largestForms = 4; // in the height of the picture
    const float scale = largestForms / static_cast<float>(height);
    RgbImage image{width, height, {}};
    image.pixels.reserve(std::size_t{3} * width * height);
    std::minstd_rand random(1);
    std::normal_distribution<float> normal;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (const float light : lightAt(scene, static_cast<float>(x) * scale, static_cast<float>(y) * scale)) {
                // A sensor's noise has a part of its own, and one that grows with the light.
                const float noise = scene.noise * std::sqrt(0.3F + light / 128) * normal(random);
                image.pixels.push_back(static_cast<std::uint8_t>(std::clamp(light + noise + 0.5F, 0.0F, 255.0F)));
            }
        }
    }
    return image;
}

RgbImage readPpm(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string magic;
    RgbImage image;
    unsigned largest = 0;
    stream >> magic >> image.width >> image.height >> largest;
    stream.get();
    if (!stream || magic != "P6" || largest != 255)
        throw std::runtime_error(path.string() + " is no PPM file of 8 bits");
    image.pixels.resize(std::size_t{3} * image.width * image.height);
    if (!stream.read(reinterpret_cast<char*>(image.pixels.data()), static_cast<std::streamsize>(image.pixels.size())))
        throw std::runtime_error(path.string() + " is too short");
    return image;
}

} // namespace

Picture readPicture(const std::filesystem::path& file) { return {file.stem().string(), readPpm(file)}; }

void writePpm(const RgbImage& image, const std::filesystem::path& file) {
    std::ofstream stream(file, std::ios::binary);
    stream << "P6\n" << image.width << ' ' << image.height << "\n255\n";
    stream.write(reinterpret_cast<const char*>(image.pixels.data()), static_cast<std::streamsize>(image.pixels.size()));
    if (!stream.flush())
        throw std::runtime_error(file.string() + " cannot be written");
}

std::vector<Picture> drawnPictures(std::uint32_t width, std::uint32_t height) {
    std::vector<Picture> pictures;
    for (const Scene& scene : scenes)
        pictures.push_back({scene.name, draw(scene, width, height)});
    pictures.push_back({"drawing", Platform::Simulated::drawTestChart(width, height)});
    return pictures;
}

std::vector<Picture> picturesIn(const std::filesystem::path& folder) {
    std::vector<Picture> pictures;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".ppm")
            pictures.push_back(readPicture(entry.path()));
    std::ranges::sort(pictures, {}, &Picture::name);
    return pictures;
}

} // namespace Benchmarks
