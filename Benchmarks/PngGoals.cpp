#include "Benchmarks/PngGoals.h"

#include "Benchmarks/OtherEncoders.h"
#include "Benchmarks/Timing.h"
#include "Platform/Imaging/Png/PngWriter.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace Benchmarks {
namespace {

using Platform::Imaging::Png::PngWriter;

constexpr const char* libpngName = "libpng default";
constexpr const char* quickName = "libpng Up, RLE, level 1";

struct Bounds {
    double must;
    double stretch;
};

struct Kind {
    const char* name;
    Bounds speed;        // libpng's default = 1
    Bounds speedOfLarge; // the same, from 12 megapixels on
};

constexpr Kind kinds[] = {{"dense", {45, 65}, {45, 65}},
                          {"ordinary", {160, 230}, {160, 230}},
                          {"soft", {160, 220}, {140, 220}},
                          {"noise", {35, 50}, {35, 50}},
                          {"drawing", {15, 20}, {15, 20}}};
constexpr Bounds quickSpeed{9, 12};
constexpr Bounds sizeOfSmall{1.02, 1.00};
constexpr Bounds sizeOfLarge{1.06, 1.02};
constexpr Bounds sizeOfDrawing{1.35, 1.15};
constexpr Bounds threads{1.6, 1.9};
constexpr Bounds instructions{20, 33};

bool isLarge(const RgbImage& image) { return image.width >= 4000; }

void require(bool holds, const std::string& text) {
    if (!holds)
        throw std::runtime_error(text);
}

Bytes encodeWith(const RgbImage& image, const Platform::Imaging::Png::RunBeside& runBeside) {
    PngWriter writer(image.width, image.height, runBeside);
    const std::size_t rowSize = std::size_t{3} * image.width;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::copy_n(image.pixels.data() + y * rowSize, rowSize, writer.nextRow().data());
        writer.writeRow();
    }
    return writer.takeFile();
}

/// What one thread takes while the other one encodes a picture of its own: as much of the second core is free then as
/// for two threads that share a picture.
Bytes withOneThread(const RgbImage& image) {
    const std::jthread other([&image] { encodeWith(image, {}); });
    return encodeWith(image, {});
}

Bytes withTwoThreads(const RgbImage& image) {
    std::jthread thread;
    return encodeWith(image, [&thread](std::function<void()> work) { thread = std::jthread(std::move(work)); });
}

using Encode = Bytes (*)(const RgbImage& image);
using Clock = double (*)();

struct Comparison {
    double speed;     // how many times as long the reference takes
    std::size_t size; // of the reference's file
};

/// The median of rounds in which both take turns.
Comparison compare(const RgbImage& image, Clock clock, Encode ours, Encode reference, int rounds) {
    std::vector<double> ratios;
    std::size_t size = 0;
    for (int round = 0; round < rounds; ++round) {
        const double begin = clock();
        size = reference(image).size();
        const double middle = clock();
        ours(image);
        ratios.push_back((middle - begin) / (clock() - middle));
    }
    return {median(ratios), size};
}

Figure figure(const std::string& what, const char* reference, double ratio, Bounds bounds) {
    return {what, reference, ratio, bounds.must, bounds.stretch};
}

/// What valgrind says of how many were executed between the beginning and the end of encodeOnce.
double countedBy(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"), &pclose);
    require(pipe != nullptr, "no process for valgrind");
    constexpr std::string_view label = "Collected : ";
    double count = 0;
    std::array<char, 1000> line{};
    while (fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        const std::string_view text(line.data());
        if (const std::size_t at = text.find(label); at != std::string_view::npos)
            count = std::atof(text.data() + at + label.size());
    }
    require(count > 0, "valgrind failed");
    return count;
}

} // namespace

std::vector<Figure> figuresOf(const Picture& picture) {
    const RgbImage& image = picture.image;
    const auto* const kind = std::ranges::find(kinds, std::string_view(picture.name), &Kind::name);
    require(kind != std::end(kinds), picture.name + " has no goals");
    const bool isDrawing = kind->name == std::string_view("drawing");
    const std::string name = std::string(isLarge(image) ? "12 MP " : "1080p ") + kind->name;

    const Bytes file = Platform::Imaging::encodePng(image); // and buffers and code are warm
    require(Platform::Imaging::Png::pixelsOf(file) == image.pixels, name + ": the file has other pixels");
    require(withTwoThreads(image) == file, name + ": two threads make another file");

    const Comparison toDefault =
        compare(image, &processorTime, &Platform::Imaging::encodePng, &libpngDefault, isLarge(image) ? 1 : 3);
    const double sizes = static_cast<double>(file.size()) / static_cast<double>(toDefault.size);
    std::vector<Figure> figures;
    figures.push_back(
        figure(name + ": speed", libpngName, toDefault.speed, isLarge(image) ? kind->speedOfLarge : kind->speed));
    if (isDrawing) {
        figures.push_back(figure(name + ": size", libpngName, sizes, sizeOfDrawing));
        return figures;
    }
    const Comparison toQuick = compare(image, &processorTime, &Platform::Imaging::encodePng, &libpngRuns, 5);
    const Comparison toOneThread = compare(image, &wallTime, &withTwoThreads, &withOneThread, 15);
    figures.push_back(figure(name + ": speed", quickName, toQuick.speed, quickSpeed));
    figures.push_back(figure(name + ": size", libpngName, sizes, isLarge(image) ? sizeOfLarge : sizeOfSmall));
    figures.push_back(figure(name + ": speed with two threads", "one thread each", toOneThread.speed, threads));
    return figures;
}

std::vector<Figure> instructionsOf(const std::filesystem::path& program, const Picture& picture) {
    if (std::system("valgrind --version > /dev/null 2>&1") != 0)
        return {};
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("PngBenchmark" + std::to_string(getpid()) + ".ppm");
    writePpm(picture.image, file);
    const auto count = [&](const char* encoder) {
        return countedBy("valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect='encodeOnce*' '" +
                         program.string() + "' --once '" + encoder + "' '" + file.string() + "'");
    };
    const double ratio = count("libpng") / count("ours");
    std::filesystem::remove(file);
    return {figure("1080p dense: instructions saved", libpngName, ratio, instructions)};
}

} // namespace Benchmarks
