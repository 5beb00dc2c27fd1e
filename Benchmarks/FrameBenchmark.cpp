// Compares how camera frames become pixels, and files, with the plain way to do it: in each round each way is gone
// once, by turns, so that what else the machine does meets all of them; of the rounds the medians are compared, in
// processor time of all threads. Prints a line a figure: what, reference, the reference's time and ours, how many times
// as fast. Usage: FrameBenchmark [--lines] [--rounds NUMBER]
//   --lines: fields with a tab between, and with what is wanted at least, and at best. 9 rounds if not told.

#include "Benchmarks/OtherEncoders.h"
#include "Benchmarks/Pictures.h"
#include "Platform/Imaging/FrameConverter.h"
#include "Platform/Imaging/PngEncoder.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace Benchmarks;
using Platform::Imaging::FrameFormat;
using Platform::Imaging::FrameLayout;

struct Options {
    bool lines = false;
    int rounds = 9;
};

struct Goal {
    double must;
    double stretch;
};

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double timeOf(const std::function<void()>& work) {
    const double begin = processorTime();
    work();
    return processorTime() - begin;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void compare(const Options& options, const std::string& what, const char* reference,
             const std::function<void()>& theirs, const std::function<void()>& ours, Goal goal) {
    std::vector<double> theirTimes;
    std::vector<double> ourTimes;
    for (int round = 0; round < options.rounds; ++round) {
        theirTimes.push_back(timeOf(theirs));
        ourTimes.push_back(timeOf(ours));
    }
    const double theirTime = 1000 * median(theirTimes);
    const double ourTime = 1000 * median(ourTimes);
    const double ratio = theirTime / ourTime;
    if (options.lines)
        std::printf("%s\t%s\t%.2f ms\t%.2f\t>=%.2f\t>=%.2f\n", what.c_str(), reference, ourTime, ratio, goal.must,
                    goal.stretch);
    else
        std::printf("%-30s %-34s %9.2f ms %9.2f ms %7.2f\n", what.c_str(), reference, theirTime, ourTime, ratio);
    std::fflush(stdout);
}

struct Frame {
    FrameLayout layout;
    Bytes bytes;
};

std::uint8_t weighted(const std::uint8_t* rgb, int red, int green, int blue, int offset) {
    return static_cast<std::uint8_t>(((red * rgb[0] + green * rgb[1] + blue * rgb[2] + 128) >> 8) + offset);
}

/// The picture as a camera sends it in BT.601 and limited range, each difference of colour from one pixel. Even sizes.
Frame frameOf(const RgbImage& image, FrameFormat format) {
    Frame frame{{format, image.width, image.height}, {}};
    frame.layout.strides = stridesFrom(format, planeRowBytes(frame.layout, 0));
    frame.bytes.resize(frameBytes(frame.layout));
    const bool packed = format == FrameFormat::Yuyv;
    const std::size_t pixels = std::size_t{image.width} * image.height;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t* const rgb = image.pixels.data() + 3 * i;
        frame.bytes[packed ? 2 * i : i] = weighted(rgb, 66, 129, 25, 16);
        const std::size_t row = i / image.width;
        if (i % 2 != 0 || (!packed && row % 2 != 0))
            continue;
        const std::size_t u = packed ? 2 * i + 1 : pixels + row / 2 * image.width + i % image.width;
        frame.bytes[u] = weighted(rgb, -38, -74, 112, 128);
        frame.bytes[u + (packed ? 2 : 1)] = weighted(rgb, 112, -94, -18, 128);
    }
    return frame;
}

std::uint8_t cut(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

/// What one writes without much thought: integers, and each difference of colour for all its pixels.
void convertPlainly(const Frame& frame, Bytes& pixels) {
    const auto [width, height] = std::pair{frame.layout.width, frame.layout.height};
    const bool packed = frame.layout.format == FrameFormat::Yuyv;
    const std::size_t differences = std::size_t{width} * height;
    std::uint8_t* out = pixels.data();
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t i = y * width + x;
            const std::size_t u = packed ? i / 2 * 4 + 1 : differences + y / 2 * width + x / 2 * 2;
            const int c = 298 * (frame.bytes[packed ? 2 * i : i] - 16) + 128;
            const int d = frame.bytes[u] - 128;
            const int e = frame.bytes[u + (packed ? 2 : 1)] - 128;
            *out++ = cut((c + 409 * e) >> 8);
            *out++ = cut((c - 100 * d - 208 * e) >> 8);
            *out++ = cut((c + 516 * d) >> 8);
        }
}

/// As for a file: nobody needs more than a row at a time.
void readRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes, Bytes& row) {
    const auto rows = Platform::Imaging::openFrame(layout, bytes);
    for (std::uint32_t y = 0; y < layout.height; ++y)
        rows->read(row.data());
}

std::string sizeText(const RgbImage& image) { return std::to_string(image.width) + "x" + std::to_string(image.height); }

void compareYuv(const Options& options, const RgbImage& picture, FrameFormat format, const char* name, Goal goal) {
    const Frame frame = frameOf(picture, format);
    Bytes pixels(picture.pixels.size());
    Bytes row(std::size_t{3} * picture.width);
    compare(
        options, std::string(name) + " " + sizeText(picture), "plain integer loop",
        [&] { convertPlainly(frame, pixels); }, [&] { readRows(frame.layout, frame.bytes, row); }, goal);
}

class TurboJpeg {
public:
    explicit TurboJpeg(tjhandle handle) : _handle(handle) {
        if (_handle == nullptr)
            throw std::runtime_error("libjpeg-turbo cannot be used");
    }
    ~TurboJpeg() { tjDestroy(_handle); }
    TurboJpeg(const TurboJpeg&) = delete;
    TurboJpeg& operator=(const TurboJpeg&) = delete;

    Bytes compress(const RgbImage& image) const {
        unsigned char* file = nullptr;
        unsigned long size = 0;
        constexpr int quality = 90;
        require(tjCompress2(_handle, image.pixels.data(), static_cast<int>(image.width), 0,
                            static_cast<int>(image.height), TJPF_RGB, &file, &size, TJSAMP_422, quality, 0));
        Bytes bytes(file, file + size);
        tjFree(file);
        return bytes;
    }
    void decompress(const Bytes& file, const RgbImage& size, Bytes& pixels) const {
        require(tjDecompress2(_handle, file.data(), file.size(), pixels.data(), static_cast<int>(size.width), 0,
                              static_cast<int>(size.height), TJPF_RGB, 0));
    }

private:
    static void require(int result) {
        if (result != 0)
            throw std::runtime_error("libjpeg-turbo has failed");
    }

    const tjhandle _handle;
};

void compareJpeg(const Options& options, const RgbImage& picture) {
    const Bytes file = TurboJpeg(tjInitCompress()).compress(picture);
    const TurboJpeg reader(tjInitDecompress());
    Bytes pixels(picture.pixels.size());
    Bytes row(std::size_t{3} * picture.width);
    compare(
        options, "MJPEG " + sizeText(picture), "libjpeg-turbo, warm buffer",
        [&] { reader.decompress(file, picture, pixels); },
        [&] { readRows({FrameFormat::Jpeg, picture.width, picture.height}, file, row); }, {0.97, 1.0});
}

void compareFiles(const Options& options, const RgbImage& picture) {
    const Frame frame = frameOf(picture, FrameFormat::Yuyv);
    RgbImage plain = picture;
    Options fewer = options;
    fewer.rounds = std::max(3, options.rounds / 3); // the reference takes its time
    compare(
        fewer, "YUYV " + sizeText(picture) + " to PNG", "plain integer loop, libpng",
        [&] {
            convertPlainly(frame, plain.pixels);
            libpngDefault(plain);
        },
        [&] { Platform::Imaging::encodePng(*Platform::Imaging::openFrame(frame.layout, frame.bytes)); }, {40, 60});
}

void run(const Options& options) {
    constexpr Goal yuyvGoal{4.5, 5.5};
    constexpr Goal nv12Goal{6.5, 8.5};
    for (const auto& [width, height] : {std::pair{1920U, 1080U}, std::pair{4000U, 3000U}}) {
        const RgbImage dense = drawnPictures(width, height).front().image;
        compareYuv(options, dense, FrameFormat::Yuyv, "YUYV", yuyvGoal);
        compareYuv(options, dense, FrameFormat::Nv12, "NV12", nv12Goal);
        compareJpeg(options, dense);
        if (height == 1080)
            compareFiles(options, dense);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--lines") {
            options.lines = true;
        } else if (option == "--rounds" && i + 1 < argc && std::atoi(argv[i + 1]) > 0) {
            options.rounds = std::atoi(argv[++i]);
        } else {
            std::fprintf(stderr, "Usage: %s [--lines] [--rounds NUMBER]\n", argv[0]);
            return 2;
        }
    }
    try {
        run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
