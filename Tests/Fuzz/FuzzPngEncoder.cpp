// A picture to be written: the first two bytes are its width, the others its samples with runs among them. Some last
// bytes repeat it until two threads share it.

#include "Platform/Imaging/Png/PngWriter.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Fuzz/FuzzTarget.h"
#include "Tests/Platform/Imaging/Png/InstructionSets.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"
#include "Tests/Platform/Imaging/Png/ThreadBeside.h"

#include <algorithm>
#include <span>
#include <stdexcept>

namespace {

using namespace Platform::Imaging;

constexpr std::size_t mostSamples = 300'000; // more than a block; larger ones are within the limits, but slow
constexpr std::size_t samplesForTwo = 1'050'000;
constexpr std::size_t tallest = 32767;

/// A byte from 0xC0 on repeats the next one 9 times for each that it is above that: up to 567, longer than two of
/// deflate's repetitions.
Bytes samplesFrom(std::span<const std::uint8_t> bytes) {
    Bytes samples;
    for (std::size_t i = 0; i < bytes.size() && samples.size() < mostSamples; ++i) {
        if (bytes[i] < 0xC0 || i + 1 == bytes.size()) {
            samples.push_back(bytes[i]);
        } else {
            const std::size_t count = std::size_t{9} * (bytes[i] - 0xC0U);
            samples.insert(samples.end(), count, bytes[++i]);
        }
    }
    return samples;
}

RgbImage pictureFrom(std::span<const std::uint8_t> bytes) {
    RgbImage image;
    image.width = 1 + (bytes[0] | bytes[1] << 8) % 1000;
    image.pixels = samplesFrom(bytes.subspan(2));
    const std::size_t rowSize = std::size_t{3} * image.width;
    image.height = static_cast<std::uint32_t>(std::min<std::size_t>(image.pixels.size() / rowSize + 1, tallest));
    image.pixels.resize(rowSize * image.height);
    if (bytes.back() % 32 == 31) {
        const Bytes once = image.pixels;
        const std::uint32_t height = image.height;
        while (image.pixels.size() < samplesForTwo && image.height + height <= tallest) {
            image.pixels.insert(image.pixels.end(), once.begin(), once.end());
            image.height += height;
        }
    }
    return image;
}

Bytes encodedByTwo(const RgbImage& image) {
    Png::ThreadBeside beside;
    Png::PngWriter writer(image.width, image.height, beside.run());
    const std::size_t rowSize = std::size_t{3} * image.width;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::copy_n(image.pixels.data() + y * rowSize, rowSize, writer.nextRow().data());
        writer.writeRow();
    }
    return writer.takeFile();
}

bool isWhole(const Bytes& file, const RgbImage& image) {
    try {
        return Png::pixelsOf(file) == image.pixels &&
               Png::unpacked(file).filteredRows.size() == (std::size_t{3} * image.width + 1) * image.height;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace

void fuzz(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return;
    const RgbImage image = pictureFrom({data, size});
    const Bytes file = encodePng(image);
    if (image.pixels.size() >= samplesForTwo) { // enough for one input
        require(encodedByTwo(image) == file, "two threads write the same file");
        return;
    }
    require(isWhole(file, image), "a picture is read as it was written");
    require(file.size() <= image.pixels.size() + image.height + image.pixels.size() / 1000 + 100,
            "a file is hardly larger than its picture");
    std::size_t number = size; // each input tries a third of the sets: all of them would take a sanitizer minutes
    Png::withEachInstructionSet([&](const char*) {
        require(number++ % 3 != 0 || encodePng(image) == file, "every instruction set writes the same file");
    });
}

std::vector<std::string> fuzzSeeds() {
    std::string gradient("\x1F\x00", 2);
    std::string noise("\x07\x00", 2);
    std::string dots("\x63\x00", 2);
    for (int i = 0; i < 300; ++i) {
        gradient += static_cast<char>(i / 2);
        noise += static_cast<char>(i * i * 37 % 0xC0);
        dots += {static_cast<char>(0xC0 + i % 64), '\0', static_cast<char>(i % 9 == 0 ? 0x80 : 0)};
    }
    return {gradient, noise, dots, gradient + dots + noise};
}
