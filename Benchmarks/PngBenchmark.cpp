// Compares our PNG encoder with others: in each round each of them encodes a picture once, by turns, so that what else
// the machine does meets all of them; of the rounds the medians are compared, in processor time. Each file is checked.
// Usage: PngBenchmark [--pictures FOLDER] [--rounds NUMBER]
//   FOLDER has pictures in PPM files; without one they are drawn, of 1920x1080 and of 4000x3000. 5 rounds if not told.

#include "Benchmarks/OtherEncoders.h"
#include "Benchmarks/Pictures.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string_view>

namespace {

using namespace Benchmarks;

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

    double median() const {
        std::vector<double> sorted = times;
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2];
    }
};

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

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
    const double ourTime = results[0].median();
    const auto ourSize = static_cast<double>(results[0].size);
    for (std::size_t i = 0; i < std::size(encoders); ++i) {
        const auto size = static_cast<double>(results[i].size);
        std::printf("%-10s %5ux%-5u %-15s %9.2f %8.2f %9.3f %8.3f\n", picture.name.c_str(), picture.image.width,
                    picture.image.height, encoders[i].name, 1000 * results[i].median(), results[i].median() / ourTime,
                    size / 1e6, size / ourSize);
    }
    std::fflush(stdout);
}

void run(const std::string& folder, int rounds) {
    std::printf("%-10s %11s %-15s %9s %8s %9s %8s\n", "picture", "size", "encoder", "ms", "/ ours", "MB", "/ ours");
    if (!folder.empty()) {
        for (const Picture& picture : picturesIn(folder))
            compare(picture, rounds);
        return;
    }
    for (const auto& [width, height] : {std::pair{1920U, 1080U}, std::pair{4000U, 3000U}})
        for (const Picture& picture : drawnPictures(width, height))
            compare(picture, rounds);
}

} // namespace

int main(int argc, char* argv[]) {
    std::string folder;
    int rounds = 5;
    for (int i = 1; i < argc; i += 2) {
        const std::string_view option = argv[i];
        if (i + 1 < argc && option == "--pictures") {
            folder = argv[i + 1];
        } else if (i + 1 < argc && option == "--rounds" && std::atoi(argv[i + 1]) > 0) {
            rounds = std::atoi(argv[i + 1]);
        } else {
            std::fprintf(stderr, "Usage: %s [--pictures FOLDER] [--rounds NUMBER]\n", argv[0]);
            return 2;
        }
    }
    try {
        run(folder, rounds);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
