// Takes a still in every format that the cameras of a machine offer at one size. The hub itself settles for one
// format a camera.

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Platform/V4l2/V4l2Platform.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Platform;

constexpr double highestRate = 30.0; // frames a second: an emulated machine has little use for more

/// The one of a pixel format's entries that is to be used, by the format's name.
using Choice = std::map<std::u16string, MediaFrameFormat>;

Choice formatsOf(const MediaFrameSource& source, std::uint32_t width, std::uint32_t height) {
    Choice choice;
    for (const MediaFrameFormat& format : source->SupportedFormats()) {
        if (format.Width != width || format.Height != height || format.FrameRate > highestRate)
            continue;
        const auto known = choice.find(format.Subtype);
        if (known == choice.end() || known->second.FrameRate < format.FrameRate)
            choice.insert_or_assign(format.Subtype, format);
    }
    return choice;
}

std::vector<std::uint8_t> still(const MediaCapture& capture) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    blockingWait(capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream));
    std::vector<std::uint8_t> bytes(stream->Size());
    stream->Seek(0);
    stream->Read(bytes);
    return bytes;
}

void takeAll(CameraPlatform& platform, const MediaFrameSourceGroup& group, std::uint32_t width, std::uint32_t height,
             const std::filesystem::path& folder) {
    const auto capture = platform.CreateMediaCapture();
    MediaCaptureInitializationSettings settings;
    settings.SourceGroup = group;
    blockingWait(capture->InitializeAsync(settings));
    const MediaFrameSource source = capture->FrameSources().Lookup(group->SourceInfos().GetAt(0)->Id());
    const auto own = folder / Halden::toUtf8(group->Id());
    std::filesystem::create_directories(own);
    for (const auto& [name, format] : formatsOf(source, width, height)) {
        blockingWait(source->SetFormatAsync(format));
        const auto bytes = still(capture);
        std::ofstream(own / (Halden::toUtf8(name) + ".png"), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    capture->Close();
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        std::fprintf(stderr, "Usage: EveryFormat WIDTH HEIGHT FOLDER\nFills FOLDER/CAMERA/FORMAT.png\n");
        return 2;
    }
    try {
        const auto platform = V4l2::createV4l2Platform();
        const auto width = static_cast<std::uint32_t>(std::stoul(argv[1]));
        const auto height = static_cast<std::uint32_t>(std::stoul(argv[2]));
        for (const auto& group : blockingWait(platform->FindAllAsync()))
            takeAll(*platform, group, width, height, argv[3]);
    } catch (const winrt::hresult_error& error) {
        std::fprintf(stderr, "%s\n", Halden::toUtf8(error.message()).c_str());
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
