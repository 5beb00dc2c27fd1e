#include "Platform/Imaging/MotionJpegReader.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>

namespace Platform::Imaging {
namespace {

RgbImage readMotionJpeg(const Bytes& bytes) {
    MotionJpegReader reader(bytes);
    return readPicture(reader);
}

Bytes frame() { return writeJpeg(smoothPicture(64, 48), TJSAMP_422); }

/// The file without its segments of that marker.
Bytes without(const Bytes& file, std::uint8_t marker) {
    Bytes result(file.begin(), file.begin() + 2);
    std::size_t at = 2;
    while (file.at(at + 1) != 0xDA) { // the start of the picture's data
        const std::size_t length = 2u + file.at(at + 2) * 256u + file.at(at + 3);
        if (file.at(at + 1) != marker)
            result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(at),
                          file.begin() + static_cast<std::ptrdiff_t>(at + length));
        at += length;
    }
    result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(at), file.end());
    return result;
}

Bytes withBytesBeforeTheEndMark(Bytes file, std::size_t count) {
    file.insert(file.end() - 2, count, 0x00);
    return file;
}

TEST(MotionJpegReaderTest, ReadsAFrameWithoutHuffmanTables) {
    const Bytes whole = frame();
    const Bytes bare = without(whole, 0xC4);
    ASSERT_LT(bare.size(), whole.size());
    EXPECT_EQ(readMotionJpeg(bare).pixels, readMotionJpeg(whole).pixels);
}

TEST(MotionJpegReaderTest, TakesAFewStrayBytesBeforeTheEndMark) {
    EXPECT_EQ(readMotionJpeg(withBytesBeforeTheEndMark(frame(), 4)).pixels, readMotionJpeg(frame()).pixels);
}

TEST(MotionJpegReaderTest, RefusesManyStrayBytesBeforeTheEndMark) {
    EXPECT_EQ(raisedBy([] { readMotionJpeg(withBytesBeforeTheEndMark(frame(), 500)); }).substr(0, 22),
              "80004005 Motion JPEG: ");
}

TEST(MotionJpegReaderTest, TakesPaddingBehindTheEndMark) {
    Bytes padded = frame();
    padded.resize(padded.size() + 5000);
    EXPECT_EQ(readMotionJpeg(padded).pixels, readMotionJpeg(frame()).pixels);
}

TEST(MotionJpegReaderTest, TakesAFrameWithoutItsEndMark) {
    Bytes open = frame();
    open.resize(open.size() - 2);
    EXPECT_EQ(readMotionJpeg(open).pixels, readMotionJpeg(frame()).pixels);
}

TEST(MotionJpegReaderTest, RefusesFramesThatEndEarly) {
    const Bytes file = frame();
    for (std::size_t size = 0; size + 16 < file.size(); size += 7) {
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(raisedBy([&] { readMotionJpeg(cut); }), "nothing raised") << size << " of " << file.size();
    }
}

/// Damage that happens to leave a readable file cannot be seen; most does not.
TEST(MotionJpegReaderTest, RefusesMostFramesWithARunOfLostBytes) {
    const Bytes whole = writeJpeg(noisyPicture(64, 48), TJSAMP_422);
    int refused = 0;
    for (std::ptrdiff_t lost = 50; lost <= 1000; lost += 50) {
        Bytes file = whole;
        const auto middle = file.begin() + static_cast<std::ptrdiff_t>(file.size() / 2);
        file.erase(middle, middle + lost);
        refused += raisedBy([&] { readMotionJpeg(file); }) != "nothing raised" ? 1 : 0;
    }
    EXPECT_GE(refused, 18) << "of 20";
}

TEST(MotionJpegReaderTest, RefusesProgressiveFiles) {
    EXPECT_EQ(raisedBy([] { readMotionJpeg(writeJpeg(smoothPicture(64, 48), TJSAMP_420, TJFLAG_PROGRESSIVE)); }),
              "80004005 Motion JPEG: progressive pictures are not supported");
}

TEST(MotionJpegReaderTest, RefusesWhatIsNoJpeg) {
    EXPECT_EQ(raisedBy([] { readMotionJpeg(Bytes(100, 7)); }).substr(0, 22), "80004005 Motion JPEG: ");
    EXPECT_EQ(raisedBy([] { readMotionJpeg(Bytes()); }).substr(0, 22), "80004005 Motion JPEG: ");
}

} // namespace
} // namespace Platform::Imaging
