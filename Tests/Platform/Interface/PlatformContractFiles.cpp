#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Support/TemporaryFolder.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

using namespace Platform;

namespace {

/// A bitmap of two pixels, red and blue.
SoftwareBitmap twoPixels() {
    return std::make_shared<SoftwareBitmapData>(
        SoftwareBitmapData{BitmapPixelFormat::Rgba8, 2, 1, {255, 0, 0, 255, 0, 0, 255, 255}});
}

std::u16string textOf(const std::filesystem::path& path) { return path.u16string(); }

} // namespace

TEST_P(PlatformContract, AStillCanBeDecoded) {
    const MediaCapture capture = open();
    const auto stream = newStream();
    blockingWait(takeStill(capture, stream)); // leaves the position at the end
    const auto bitmap =
        blockingWait(blockingWait(_platform->CreateBitmapDecoderAsync(stream))->GetSoftwareBitmapAsync());
    EXPECT_EQ(bitmap->Format, BitmapPixelFormat::Bgra8);
    EXPECT_EQ(std::pair(bitmap->PixelWidth, bitmap->PixelHeight), pngSize(stream));
}

TEST_P(PlatformContract, ABitmapThatIsEncodedIsDecodedAgain) {
    const auto stream = newStream();
    const auto encoder = blockingWait(_platform->CreateBitmapEncoderAsync(PngEncoderId, stream));
    encoder->SetSoftwareBitmap(twoPixels());
    blockingWait(encoder->FlushAsync());
    const auto bitmap =
        blockingWait(blockingWait(_platform->CreateBitmapDecoderAsync(stream))->GetSoftwareBitmapAsync());
    EXPECT_EQ(_platform->ConvertSoftwareBitmap(bitmap, BitmapPixelFormat::Rgba8)->Pixels, twoPixels()->Pixels);
}

TEST_P(PlatformContract, BytesThatAreNoPictureAreRefused) {
    const auto stream = newStream();
    stream->Write(std::array<std::uint8_t, 4>{1, 2, 3, 4});
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->CreateBitmapDecoderAsync(stream)); }), winrt::result::fail);
}

TEST_P(PlatformContract, CodecsNeedAStreamAndPngAsEncoder) {
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->CreateBitmapDecoderAsync(nullptr)); }),
              winrt::result::invalidArgument);
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->CreateBitmapEncoderAsync(PngEncoderId, nullptr)); }),
              winrt::result::invalidArgument);
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->CreateBitmapEncoderAsync(Guid{}, newStream())); }),
              winrt::result::invalidArgument);
}

TEST_P(PlatformContract, AnEncoderNeedsABitmap) {
    const auto encoder = blockingWait(_platform->CreateBitmapEncoderAsync(PngEncoderId, newStream()));
    EXPECT_EQ(codeRaisedBy([&] { encoder->SetSoftwareBitmap(nullptr); }), winrt::result::invalidArgument);
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(encoder->FlushAsync()); }), winrt::result::invalidArgument);
}

TEST_P(PlatformContract, ConvertingKeepsABitmapThatHasTheFormatAndNeedsOne) {
    const SoftwareBitmap bitmap = twoPixels();
    EXPECT_EQ(_platform->ConvertSoftwareBitmap(bitmap, BitmapPixelFormat::Rgba8), bitmap);
    for (const auto& [source, format] :
         {std::pair(SoftwareBitmap(), BitmapPixelFormat::Rgba8), std::pair(bitmap, BitmapPixelFormat::Unknown)})
        EXPECT_EQ(codeRaisedBy([&] { _platform->ConvertSoftwareBitmap(source, format); }),
                  winrt::result::invalidArgument);
}

TEST_P(PlatformContract, AFileIsFoundByItsAbsolutePathAlone) {
    const TemporaryFolder folder;
    writeFile(folder.path() / "file", "bytes");
    const auto codeFor = [&](const std::u16string& path) {
        return codeRaisedBy([&] { blockingWait(_platform->GetFileFromPathAsync(path)); });
    };
    EXPECT_EQ(blockingWait(_platform->GetFileFromPathAsync(textOf(folder.path() / "file")))->Path(),
              textOf(folder.path() / "file"));
    EXPECT_EQ(codeFor(u"file"), winrt::result::invalidArgument);
    EXPECT_EQ(codeFor(textOf(folder.path() / "missing")), winrt::result::notFound);
    EXPECT_EQ(codeFor(textOf(folder.path())), winrt::result::fail);
}

TEST_P(PlatformContract, ANewFileStaysInItsFolderUnderANameOfItsOwn) {
    const TemporaryFolder folder;
    writeFile(folder.path() / "file.png", "bytes");
    const auto file = blockingWait(_platform->GetFileFromPathAsync(textOf(folder.path() / "file.png")));
    const auto parent = blockingWait(file->GetParentAsync());
    const auto create = [&](const std::u16string& name, CreationCollisionOption option) {
        return blockingWait(parent->CreateFileAsync(name, option))->Path();
    };
    EXPECT_EQ(create(u"file.png", CreationCollisionOption::GenerateUniqueName), textOf(folder.path() / "file (2).png"));
    EXPECT_EQ(create(u"file.png", CreationCollisionOption::OpenIfExists), textOf(folder.path() / "file.png"));
    EXPECT_EQ(readFile(folder.path() / "file.png"), "bytes");
    EXPECT_EQ(codeRaisedBy([&] { create(u"../file.png", CreationCollisionOption::OpenIfExists); }),
              winrt::result::invalidArgument);
}
