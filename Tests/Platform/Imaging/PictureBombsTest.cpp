#include "Platform/Imaging/ImageDecoder.h"
#include "Tests/Platform/Imaging/ClaimedSizes.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>
#include <jpeglib.h> // needs <cstdio>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

namespace Platform::Imaging {
namespace {

constexpr FrameLayout layout{FrameFormat::Jpeg, 64, 48};

/// Its samples in these scans.
Bytes jpegInScans(const std::vector<jpeg_scan_info>& scans) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* file = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &file, &size);
    jpeg.image_width = layout.width;
    jpeg.image_height = layout.height;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg.scan_info = scans.data();
    jpeg.num_scans = static_cast<int>(scans.size());
    jpeg_start_compress(&jpeg, TRUE);
    RgbImage image = smoothPicture(layout.width, layout.height);
    for (std::size_t row = 0; row < layout.height; ++row) {
        JSAMPROW pixels = image.pixels.data() + row * 3 * layout.width;
        jpeg_write_scanlines(&jpeg, &pixels, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    const std::unique_ptr<unsigned char, void (*)(void*)> owner(file, &std::free);
    return Bytes(file, file + size);
}

/// The file with its last scan again, so many times.
Bytes withMoreScans(Bytes file, int count) {
    const Bytes mark{0xFF, 0xDA};
    const auto scan = std::find_end(file.begin(), file.end(), mark.begin(), mark.end());
    const Bytes again(scan, file.end() - 2);
    for (; count > 0; --count)
        file.insert(file.end() - 2, again.begin(), again.end());
    return file;
}

/// The work hardly raises the most memory that the process has had; in a process of its own.
void expectToTakeNoMemory(const std::function<void()>& work) {
    const int result = runInChild([&work] {
        const auto peak = [] {
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            return usage.ru_maxrss; // kB
        };
        const long before = peak();
        work();
        EXPECT_LT(peak() - before, 30'000);
    });
    EXPECT_EQ(result, 0);
}

TEST(PictureBombsTest, AFrameMayHaveAScanForEachComponentAndNoMore) {
    const Bytes file = jpegInScans({{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}});
    EXPECT_EQ(convertFrame(layout, file).pixels, decodeImage(file).pixels);
    EXPECT_EQ(raisedBy([&] { convertFrame(layout, withMoreScans(file, 1)); }),
              "80004005 Motion JPEG: more scans than the picture has components");
}

TEST(PictureBombsTest, AProgressiveFileMayHaveManyScansButNotAnyNumber) {
    const Bytes file = jpegInScans({{3, {0, 1, 2}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 0}});
    EXPECT_EQ(decodeImage(withMoreScans(file, 100)).pixels, decodeImage(file).pixels);
    EXPECT_EQ(raisedBy([&] { decodeImage(withMoreScans(file, 1000)); }),
              "80004005 JPEG: Progressive JPEG image has more than 500 scans");
}

TEST(PictureBombsTest, WhatClaimsASizeBeyondTheLimitsTakesNoMemory) {
    expectToTakeNoMemory([] {
        EXPECT_EQ(raisedBy([] { decodeImage(jpegOfClaimedSize(32767, 32767)); }),
                  "80070057 JPEG: a picture of 32767x32767 is not supported");
        EXPECT_EQ(raisedBy([] { decodeImage(pngOfClaimedSize(32767, 32767)); }),
                  "80070057 PNG: a picture of 32767x32767 is not supported");
        EXPECT_EQ(raisedBy([] { convertFrame(layout, jpegOfClaimedSize(32767, 32767)); }),
                  "80070057 Motion JPEG: a picture of 32767x32767 is not supported");
    });
}

TEST(PictureBombsTest, AFrameThatClaimsAnotherSizeThanTheStreamTakesNoMemory) {
    expectToTakeNoMemory([] {
        EXPECT_EQ(raisedBy([] { convertFrame(layout, jpegOfClaimedSize(10000, 10000)); }),
                  "80004005 Frame: the JPEG has another size than the stream");
    });
}

TEST(PictureBombsTest, APngTooShortForTheSizeThatItClaimsTakesNoMemory) {
    expectToTakeNoMemory([] {
        EXPECT_EQ(raisedBy([] { decodeImage(pngOfClaimedSize(10000, 10000)); }), "80004005 PNG: the data ends early");
    });
}

} // namespace
} // namespace Platform::Imaging
