#include "Platform/Imaging/BitmapCodecs.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <turbojpeg.h>

namespace Platform::Imaging {
namespace {

using testing::ElementsAre;

RandomAccessStream streamOf(const Bytes& bytes) {
    auto stream = std::make_shared<InMemoryRandomAccessStream>();
    stream->Write(bytes);
    return stream;
}

Bytes contentsOf(const RandomAccessStream& stream) {
    Bytes bytes(stream->Size());
    stream->Seek(0);
    stream->Read(bytes);
    return bytes;
}

SoftwareBitmap bitmapOf(BitmapPixelFormat format, std::uint32_t width, std::uint32_t height, Bytes pixels) {
    return std::make_shared<SoftwareBitmapData>(SoftwareBitmapData{format, width, height, std::move(pixels)});
}

/// Raises the error that an operation ended with; nothing for one that ended well.
template <typename T> std::string errorOf(const IAsyncOperation<T>& operation) {
    EXPECT_NE(operation.Status(), AsyncStatus::Started);
    return raisedBy([&] { (void)operation.GetResults(); });
}

TEST(BitmapDecoderTest, GivesOpaqueBgra8) {
    const auto opened = createBitmapDecoderAsync(streamOf(encodePng({2, 1, {1, 2, 3, 4, 5, 6}})));
    ASSERT_EQ(opened.Status(), AsyncStatus::Completed);
    const auto decoded = opened.GetResults()->GetSoftwareBitmapAsync();
    ASSERT_EQ(decoded.Status(), AsyncStatus::Completed);
    const SoftwareBitmap bitmap = decoded.GetResults();
    EXPECT_EQ(bitmap->Format, BitmapPixelFormat::Bgra8);
    EXPECT_EQ(bitmap->PixelWidth, 2U);
    EXPECT_EQ(bitmap->PixelHeight, 1U);
    EXPECT_THAT(bitmap->Pixels, ElementsAre(3, 2, 1, 255, 6, 5, 4, 255));
}

TEST(BitmapDecoderTest, ReadsJpeg) {
    const RgbImage image = smoothPicture(20, 10);
    const auto opened = createBitmapDecoderAsync(streamOf(writeJpeg(image, TJSAMP_444)));
    const SoftwareBitmap bitmap = opened.GetResults()->GetSoftwareBitmapAsync().GetResults();
    EXPECT_EQ(bitmap->PixelWidth, 20U);
    EXPECT_EQ(bitmap->PixelHeight, 10U);
    EXPECT_EQ(bitmap->Pixels.size(), std::size_t{20} * 10 * 4);
}

TEST(BitmapDecoderTest, ReadsTheStreamFromItsStart) {
    const RandomAccessStream stream = streamOf(encodePng(smoothPicture(4, 4)));
    stream->Seek(17);
    EXPECT_EQ(createBitmapDecoderAsync(stream).Status(), AsyncStatus::Completed);
}

TEST(BitmapDecoderTest, GivesTheSamePictureEachTime) {
    const BitmapDecoder decoder = createBitmapDecoderAsync(streamOf(encodePng(noisyPicture(4, 4)))).GetResults();
    EXPECT_EQ(decoder->GetSoftwareBitmapAsync().GetResults()->Pixels,
              decoder->GetSoftwareBitmapAsync().GetResults()->Pixels);
}

TEST(BitmapDecoderTest, FailsForAHeadThatIsNoPictures) {
    EXPECT_EQ(errorOf(createBitmapDecoderAsync(streamOf({}))), "80004005 The data is neither a PNG nor a JPEG picture");
    EXPECT_EQ(errorOf(createBitmapDecoderAsync(streamOf(Bytes(50, 'x')))),
              "80004005 The data is neither a PNG nor a JPEG picture");
}

TEST(BitmapDecoderTest, FailsWithoutAStream) {
    EXPECT_EQ(errorOf(createBitmapDecoderAsync(nullptr)), "80070057 BitmapDecoder: there is no stream");
}

TEST(BitmapDecoderTest, FailsAtTheBitmapForDamageBehindTheHead) {
    Bytes file = encodePng(noisyPicture(30, 30));
    file.resize(file.size() / 2);
    const auto opened = createBitmapDecoderAsync(streamOf(file));
    ASSERT_EQ(opened.Status(), AsyncStatus::Completed);
    const auto decoded = opened.GetResults()->GetSoftwareBitmapAsync();
    EXPECT_EQ(decoded.Status(), AsyncStatus::Error);
    EXPECT_EQ(errorOf(decoded), "80004005 PNG: the data ends early");
}

TEST(BitmapEncoderTest, WritesPngFromEitherOrderOfSamples) {
    for (const auto& bitmap : {bitmapOf(BitmapPixelFormat::Bgra8, 2, 1, {3, 2, 1, 255, 6, 5, 4, 0}),
                               bitmapOf(BitmapPixelFormat::Rgba8, 2, 1, {1, 2, 3, 255, 4, 5, 6, 0})}) {
        const RandomAccessStream stream = streamOf({});
        const BitmapEncoder encoder = createBitmapEncoderAsync(PngEncoderId, stream).GetResults();
        encoder->SetSoftwareBitmap(bitmap);
        ASSERT_EQ(encoder->FlushAsync().Status(), AsyncStatus::Completed);
        EXPECT_EQ(contentsOf(stream), encodePng({2, 1, {1, 2, 3, 4, 5, 6}}));
    }
}

TEST(BitmapEncoderTest, WritesAtTheStreamsPosition) {
    const RandomAccessStream stream = streamOf({'h', 'e', 'a', 'd'});
    const BitmapEncoder encoder = createBitmapEncoderAsync(PngEncoderId, stream).GetResults();
    encoder->SetSoftwareBitmap(bitmapOf(BitmapPixelFormat::Bgra8, 1, 1, {3, 2, 1, 255}));
    encoder->FlushAsync().GetResults();
    Bytes expected{'h', 'e', 'a', 'd'};
    const Bytes file = encodePng({1, 1, {1, 2, 3}});
    expected.insert(expected.end(), file.begin(), file.end());
    EXPECT_EQ(contentsOf(stream), expected);
}

TEST(BitmapEncoderTest, WritesNothingBeforeTheFlush) {
    const RandomAccessStream stream = streamOf({});
    const BitmapEncoder encoder = createBitmapEncoderAsync(PngEncoderId, stream).GetResults();
    encoder->SetSoftwareBitmap(bitmapOf(BitmapPixelFormat::Bgra8, 1, 1, {3, 2, 1, 255}));
    EXPECT_EQ(stream->Size(), 0U);
}

TEST(BitmapEncoderTest, FailsForAnUnknownEncoder) {
    const Guid unknown{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    const auto opened = createBitmapEncoderAsync(unknown, streamOf({}));
    EXPECT_EQ(opened.Status(), AsyncStatus::Error);
    EXPECT_EQ(errorOf(opened), "80070057 BitmapEncoder: there is no encoder {00000001-0002-0003-0405-060708090a0b}");
}

TEST(BitmapEncoderTest, FailsWithoutAStream) {
    EXPECT_EQ(errorOf(createBitmapEncoderAsync(PngEncoderId, nullptr)), "80070057 BitmapEncoder: there is no stream");
}

TEST(BitmapEncoderTest, FlushFailsWithoutABitmap) {
    const RandomAccessStream stream = streamOf({});
    const auto flushed = createBitmapEncoderAsync(PngEncoderId, stream).GetResults()->FlushAsync();
    EXPECT_EQ(flushed.Status(), AsyncStatus::Error);
    EXPECT_EQ(errorOf(flushed), "80070057 FlushAsync: there is no bitmap");
    EXPECT_EQ(stream->Size(), 0U);
}

TEST(BitmapEncoderTest, RefusesABitmapThatItCannotRead) {
    const BitmapEncoder encoder = createBitmapEncoderAsync(PngEncoderId, streamOf({})).GetResults();
    EXPECT_EQ(raisedBy([&] { encoder->SetSoftwareBitmap(nullptr); }), "80070057 SetSoftwareBitmap: there is no bitmap");
    EXPECT_EQ(raisedBy([&] { encoder->SetSoftwareBitmap(bitmapOf(BitmapPixelFormat::Unknown, 1, 1, Bytes(4))); }),
              "80070057 SetSoftwareBitmap: pixel format 0 is not supported");
    EXPECT_EQ(raisedBy([&] { encoder->SetSoftwareBitmap(bitmapOf(BitmapPixelFormat::Bgra8, 0, 1, {})); }),
              "80070057 SetSoftwareBitmap: a picture of 0x1 is not supported");
    EXPECT_EQ(raisedBy([&] { encoder->SetSoftwareBitmap(bitmapOf(BitmapPixelFormat::Bgra8, 1, 1, Bytes(3))); }),
              "80070057 SetSoftwareBitmap: the pixels do not fill the bitmap");
}

TEST(SoftwareBitmapConversionTest, SwapsRedAndBlueAndKeepsAlpha) {
    const SoftwareBitmap bgra = bitmapOf(BitmapPixelFormat::Bgra8, 2, 1, {1, 2, 3, 4, 5, 6, 7, 8});
    const SoftwareBitmap rgba = convertSoftwareBitmap(bgra, BitmapPixelFormat::Rgba8);
    EXPECT_EQ(rgba->Format, BitmapPixelFormat::Rgba8);
    EXPECT_EQ(rgba->PixelWidth, 2U);
    EXPECT_EQ(rgba->PixelHeight, 1U);
    EXPECT_THAT(rgba->Pixels, ElementsAre(3, 2, 1, 4, 7, 6, 5, 8));
    EXPECT_EQ(convertSoftwareBitmap(rgba, BitmapPixelFormat::Bgra8)->Pixels, bgra->Pixels);
}

TEST(SoftwareBitmapConversionTest, SharesABitmapThatHasTheFormat) {
    const SoftwareBitmap bitmap = bitmapOf(BitmapPixelFormat::Bgra8, 1, 1, Bytes(4));
    EXPECT_EQ(convertSoftwareBitmap(bitmap, BitmapPixelFormat::Bgra8), bitmap);
}

TEST(SoftwareBitmapConversionTest, RaisesForNoBitmap) {
    EXPECT_EQ(raisedBy([] { convertSoftwareBitmap(nullptr, BitmapPixelFormat::Bgra8); }),
              "80070057 Convert: there is no bitmap");
}

TEST(SoftwareBitmapConversionTest, RaisesForFormatsThatItDoesNotKnow) {
    EXPECT_EQ(raisedBy([] {
                  convertSoftwareBitmap(bitmapOf(BitmapPixelFormat::Bgra8, 1, 1, Bytes(4)), BitmapPixelFormat::Unknown);
              }),
              "80070057 Convert: pixel format 0 is not supported");
    EXPECT_EQ(raisedBy([] {
                  convertSoftwareBitmap(bitmapOf(static_cast<BitmapPixelFormat>(62), 1, 1, Bytes(4)),
                                        BitmapPixelFormat::Bgra8);
              }),
              "80070057 Convert: pixel format 62 is not supported");
}

} // namespace
} // namespace Platform::Imaging
