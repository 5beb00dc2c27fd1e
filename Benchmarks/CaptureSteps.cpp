// What of a capture on a simulated camera is the camera's: its scene and the encoding, and, as a camera of Linux would
// have them, the frame's conversion. Called by turns with captures, so that the same busy machine meets both.
// Usage: CaptureSteps FOLDER
// Writes the pictures dense-WIDTHxHEIGHT.png into FOLDER, prints "ready", and then for each line "WIDTH HEIGHT TIMES"
// of its input a JSON object of medians in seconds:
//   still       a simulated camera's still from the scene to the end of the PNG file
//   encoding    the PNG file alone
//   conversion  the rows of a YUYV frame to RGB
// Memory is kept and a second thread helps as in the hub.

#include "Benchmarks/Pictures.h"
#include "Framework/CXX/System/ProcessStart.h"
#include "Platform/Imaging/FrameConverter.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Shared/RunBeside.h"
#include "Platform/Simulated/Picture/SceneRenderer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Platform::Imaging::FrameFormat;
using Platform::Imaging::FrameLayout;
using Platform::Imaging::RgbImage;
using Platform::Simulated::SceneRenderer;

class Times {
public:
    template <typename Step> void take(const Step& step) {
        const auto begin = std::chrono::steady_clock::now();
        step();
        _seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }

    double median() {
        std::ranges::sort(_seconds);
        return _seconds[_seconds.size() / 2];
    }

private:
    std::vector<double> _seconds;
};

RgbImage densePicture(std::uint32_t width, std::uint32_t height) {
    for (Benchmarks::Picture& picture : Benchmarks::drawnPictures(width, height))
        if (picture.name == "dense")
            return std::move(picture.image);
    throw std::runtime_error("there is no dense picture");
}

/// The picture over and over: drawing one of that size would take half a minute, and an encoder does not look back as
/// far as where it begins anew.
RgbImage tiled(const RgbImage& tile, std::uint32_t width, std::uint32_t height) {
    RgbImage image{width, height, {}};
    image.pixels.reserve(std::size_t{3} * width * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::size_t row = std::size_t{3} * tile.width * (y % tile.height);
        for (std::uint32_t x = 0; x < width; x += tile.width) {
            const auto begin = tile.pixels.begin() + static_cast<std::ptrdiff_t>(row);
            image.pixels.insert(image.pixels.end(), begin, begin + std::ptrdiff_t{3} * std::min(tile.width, width - x));
        }
    }
    return image;
}

/// One size of picture, with all that its steps need.
class Size {
public:
    Size(const std::filesystem::path& folder, RgbImage image) : _image(std::move(image)) {
        const auto [width, height] = std::pair(_image.width, _image.height);
        _capture.picture = folder / ("dense-" + std::to_string(width) + "x" + std::to_string(height) + ".png");
        const std::vector<std::uint8_t> file = Platform::Imaging::encodePng(_image);
        std::ofstream stream(_capture.picture, std::ios::binary);
        if (!stream.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size())))
            throw std::runtime_error("cannot write " + _capture.picture.string());
        _rgbLayout = {FrameFormat::Rgb24,
                      width,
                      height,
                      Platform::Imaging::stridesFrom(FrameFormat::Rgb24, 3 * width),
                      Platform::Imaging::YuvMatrix::Bt601,
                      Platform::Imaging::SampleRange::Full};
        _row.resize(std::size_t{3} * width);
        _frameLayout = {FrameFormat::Yuyv, width, height, Platform::Imaging::stridesFrom(FrameFormat::Yuyv, 2 * width)};
        _frame.assign(_image.pixels.begin(), _image.pixels.begin() + std::ptrdiff_t{2} * width * height);
        still(); // reads the picture
    }

    bool is(std::uint32_t width, std::uint32_t height) const {
        return _image.width == width && _image.height == height;
    }

    void print(int times) {
        Times stills;
        Times encodings;
        Times conversions;
        for (int i = 0; i < times; ++i) {
            stills.take([&] { still(); });
            encodings.take([&] { encode(); });
            conversions.take([&] { convert(); });
        }
        std::printf(R"({"still": %.9f, "encoding": %.9f, "conversion": %.9f})"
                    "\n",
                    stills.median(), encodings.median(), conversions.median());
    }

private:
    void still() {
        _renderer.renderPng(_capture, _image.width, _image.height, {"", _capture.neutralExposure, 0, ""}, _runBeside);
    }

    void encode() {
        const auto rows = Platform::Imaging::openFrame(_rgbLayout, _image.pixels);
        Platform::Imaging::encodePng(*rows, _runBeside);
    }

    void convert() {
        const auto rows = Platform::Imaging::openFrame(_frameLayout, _frame);
        for (std::uint32_t y = 0; y < _image.height; ++y)
            rows->read(_row.data());
    }

    RgbImage _image;
    Platform::Simulated::CaptureDefinition _capture;
    SceneRenderer _renderer;
    FrameLayout _rgbLayout;
    FrameLayout _frameLayout;
    std::vector<std::uint8_t> _frame;
    std::vector<std::uint8_t> _row;
    const Platform::Imaging::Png::RunBeside _runBeside =
        Platform::Shared::runBeside(std::make_shared<Platform::Shared::WorkerPool>());
};

void serve(const std::filesystem::path& folder) {
    const RgbImage dense = densePicture(1920, 1080);
    Size sizes[] = {{folder, dense}, {folder, tiled(dense, 4000, 3000)}};
    std::puts("ready");
    std::fflush(stdout);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int times = 0;
    while (std::cin >> width >> height >> times) {
        const auto size = std::ranges::find_if(sizes, [&](const Size& each) { return each.is(width, height); });
        if (size == std::end(sizes) || times < 1)
            throw std::runtime_error("no such size, or no times");
        size->print(times);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    Halden::System::keepFreedMemory();
    try {
        serve(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
