// A picture to be written: the first two bytes are its width, the others its samples with runs among them. With some
// last bytes two threads share them, in blocks far smaller than those of a file.

#include "Platform/Imaging/Png/BlockQueue.h"
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
constexpr std::size_t blockSize = 1000;
constexpr std::size_t samplesForTwo = 20 * blockSize; // each block's code takes its time
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
    return image;
}

Bytes coded(std::span<const std::uint8_t> bytes, const Png::RunBeside& runBeside) {
    Bytes all;
    Png::BlockQueue queue(blockSize, runBeside);
    const auto takeOldest = [&] {
        const auto block = queue.oldest().coded.bytes();
        all.insert(all.end(), block.begin(), block.end());
        queue.take();
    };
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), blockSize));
        bytes = bytes.subspan(part.size());
        Png::Block& block = queue.next();
        std::ranges::copy(part, block.bytes.begin());
        block.size = part.size();
        queue.put();
        if (queue.isFull())
            takeOldest();
    }
    while (!queue.isEmpty())
        takeOldest();
    return all;
}

Bytes codedByTwo(std::span<const std::uint8_t> bytes) {
    Png::ThreadBeside beside;
    return coded(bytes, beside.run());
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
    require(isWhole(file, image), "a picture is read as it was written");
    require(file.size() <= image.pixels.size() + image.height + image.pixels.size() / 1000 + 100,
            "a file is hardly larger than its picture");
    if (data[size - 1] % 32 == 31) {
        const auto some = std::span(image.pixels).first(std::min(image.pixels.size(), samplesForTwo));
        require(codedByTwo(some) == coded(some, {}), "two threads code blocks alike");
    }
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
