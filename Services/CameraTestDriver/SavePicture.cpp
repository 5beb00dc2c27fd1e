#include "Services/CameraTestDriver/SavePicture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/CameraTestDriver/Images.h"

#include <algorithm>

using Platform::blockingWait;

namespace {

/// Makes the file before it looks at the picture.
Platform::StorageFile writePng(const Platform::StorageFolder& folder, const std::string& name,
                               const Platform::SoftwareBitmap& picture) {
    const auto platform = Platform::cameraPlatform();
    auto file = blockingWait(
        folder->CreateFileAsync(Halden::toUtf16(name), Platform::CreationCollisionOption::GenerateUniqueName));
    const auto stream = blockingWait(file->OpenAsync(Platform::FileAccessMode::ReadWrite));
    const auto encoder = blockingWait(platform->CreateBitmapEncoderAsync(Platform::PngEncoderId, stream));
    encoder->SetSoftwareBitmap(platform->ConvertSoftwareBitmap(picture, Platform::BitmapPixelFormat::Bgra8));
    blockingWait(encoder->FlushAsync());
    return file;
}

} // namespace

void savePicture(Console& console, DriverConnection& connection, const Platform::StorageFolder& folder) {
    console.writeLine("Save an image..");
    std::int32_t number = -1;
    console.ask("Which?> ", number);
    console.writeLine();

    auto& ids = imageIds();
    if (number < 1 || static_cast<std::size_t>(number) > ids.size()) {
        console.writeLine("We don't have image ", number);
        return;
    }
    const auto id = ids[static_cast<std::size_t>(number) - 1];
    const auto picture = getImage(console, connection, id);
    const auto name = std::to_string(connection.saveCounter++) + "-" + imageIdToText(id) + ".png";
    const auto file = writePng(folder, name, picture);
    console.writeLine("Saved image to:\n ", file->Path());
    deleteImage(console, connection, id);
    ids.erase(std::find(ids.begin(), ids.end(), id));
}
