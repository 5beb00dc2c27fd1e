// Compares our PNG encoder with others, which take turns, so that what else the machine does meets all of them; in
// processor time, but for two threads. Each of our files is checked.
// Usage: PngBenchmark [--lines]
//        PngBenchmark --compare [--pictures FOLDER] [--rounds NUMBER]
//        PngBenchmark --once ENCODER FILE
//   Alone, it measures what our encoder is to reach on drawn pictures, those that miss it once more, and ends with 1
//   where one still does. --lines prints the same once, with tabs between the fields, and always ends with 0.
//   --compare shows times and sizes of all encoders; FOLDER has pictures in PPM files, without it they are the drawn
//   ones; 5 rounds if not told. --once has one of these encoders encode one PPM file.

#include "Benchmarks/OtherEncoders.h"
#include "Benchmarks/Pictures.h"
#include "Benchmarks/PngGoals.h"
#include "Benchmarks/Timing.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace Benchmarks;

/// By this name valgrind finds it.
[[gnu::noinline]] void encodeOnce(Bytes (*encode)(const RgbImage& image), const RgbImage& image) { encode(image); }

namespace {

constexpr std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1920, 1080}, {4000, 3000}};

struct Encoder {
    const char* name;
    Bytes (*encode)(const RgbImage& image);
};

constexpr Encoder encoders[] = {{"ours", &Platform::Imaging::encodePng},
                                {"ISA-L level 1", &isalOnOurRows},
                                {"libpng Up, RLE", &libpngRuns},
                                {"libspng", &spngDefault},
                                {"libpng", &libpngDefault}};

struct Result {
    std::vector<double> times; // in seconds
    std::size_t size = 0;      // in bytes
};

void runOnce(const Encoder& encoder, const RgbImage& image, Result& result) {
    const double begin = processorTime();
    const Bytes file = encoder.encode(image);
    result.times.push_back(processorTime() - begin);
    if (result.size == 0 && Platform::Imaging::Png::pixelsOf(file) != image.pixels)
        throw std::runtime_error(std::string(encoder.name) + ": the file has other pixels");
    result.size = file.size();
}

void compare(const Picture& picture, int rounds) {
    Result results[std::size(encoders)];
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < std::size(encoders); ++i)
            runOnce(encoders[i], picture.image, results[i]);
    const double ourTime = median(results[0].times);
    const auto ourSize = static_cast<double>(results[0].size);
    for (std::size_t i = 0; i < std::size(encoders); ++i) {
        const auto size = static_cast<double>(results[i].size);
        std::printf("%-10s %5ux%-5u %-15s %9.2f %8.2f %9.3f %8.3f\n", picture.name.c_str(), picture.image.width,
                    picture.image.height, encoders[i].name, 1000 * median(results[i].times),
                    median(results[i].times) / ourTime, size / 1e6, size / ourSize);
    }
    std::fflush(stdout);
}

void compareAll(const std::string& folder, int rounds) {
    std::printf("%-10s %11s %-15s %9s %8s %9s %8s\n", "picture", "size", "encoder", "ms", "/ ours", "MB", "/ ours");
    if (!folder.empty()) {
        for (const Picture& picture : picturesIn(folder))
            compare(picture, rounds);
        return;
    }
    for (const auto& [width, height] : sizes)
        for (const Picture& picture : drawnPictures(width, height))
            compare(picture, rounds);
}

bool isMet(const Figure& figure) { return figure.meets(figure.must); }

void printLine(const Figure& figure) {
    const char* sign = figure.stretch > figure.must ? ">=" : "<=";
    std::printf("%s\t%s\t\t%.3f\t%s%g\t%s%g\n", figure.what.c_str(), figure.reference.c_str(), figure.ratio, sign,
                figure.must, sign, figure.stretch);
}

void printRow(const Figure& figure) {
    const char* verdict = figure.meets(figure.stretch) ? "stretch" : isMet(figure) ? "must" : "MISSED";
    std::printf("%-38s %-24s %8.2f %8g %8g  %s\n", figure.what.c_str(), (figure.reference + " = 1").c_str(),
                figure.ratio, figure.must, figure.stretch, verdict);
}

/// Whether all that must be reached is.
bool measureGoals(const char* program, bool asLines) {
    if (asLines)
        std::puts("what\treference\tfigure\tratio\tmust\tstretch");
    else
        std::printf("%-38s %-24s %8s %8s %8s\n", "what", "reference", "ratio", "must", "stretch");
    bool allMet = true;
    const auto show = [&](const auto& measure) {
        std::vector<Figure> figures = measure();
        if (!asLines && !std::ranges::all_of(figures, &isMet))
            figures = measure();
        for (const Figure& figure : figures)
            asLines ? printLine(figure) : printRow(figure);
        std::fflush(stdout);
        allMet = allMet && std::ranges::all_of(figures, &isMet);
    };
    for (const auto& [width, height] : sizes) {
        for (const Picture& picture : drawnPictures(width, height)) {
            show([&] { return figuresOf(picture); });
            if (width == sizes[0].first && picture.name == "dense")
                show([&] { return instructionsOf(program, picture); });
        }
    }
    return allMet;
}

int usage(const char* program) {
    std::fprintf(stderr,
                 "Usage: %s [--lines]\n"
                 "       %s --compare [--pictures FOLDER] [--rounds NUMBER]\n"
                 "       %s --once ENCODER FILE\n",
                 program, program, program);
    return 2;
}

int run(const std::vector<std::string>& arguments, const char* program) {
    if (arguments.empty())
        return measureGoals(program, false) ? 0 : 1;
    if (arguments.size() == 1 && arguments[0] == "--lines") {
        measureGoals(program, true);
        return 0;
    }
    if (arguments.size() == 3 && arguments[0] == "--once") {
        const auto* const encoder =
            std::ranges::find_if(encoders, [&](const Encoder& each) { return arguments[1] == each.name; });
        if (encoder == std::end(encoders))
            return usage(program);
        encodeOnce(encoder->encode, readPicture(arguments[2]).image);
        return 0;
    }
    if (arguments[0] != "--compare")
        return usage(program);
    std::string folder;
    int rounds = 5;
    for (std::size_t i = 1; i < arguments.size(); i += 2)
        if (i + 1 < arguments.size() && arguments[i] == "--pictures")
            folder = arguments[i + 1];
        else if (i + 1 < arguments.size() && arguments[i] == "--rounds" && std::atoi(arguments[i + 1].c_str()) > 0)
            rounds = std::atoi(arguments[i + 1].c_str());
        else
            return usage(program);
    compareAll(folder, rounds);
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc), argv[0]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 3;
    }
}
