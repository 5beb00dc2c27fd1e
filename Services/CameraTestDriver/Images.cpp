#include "Services/CameraTestDriver/Images.h"

#include "Framework/CXX/Common/Clock.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Services/CameraAccess/PlatformError.h"

#include <chrono>
#include <memory>

using Platform::blockingWait;

namespace {

constexpr std::chrono::milliseconds pauseAfterFailure{100};

Platform::SoftwareBitmap takePicture(Platform::IMediaCapture& capture) {
    const auto stream = std::make_shared<Platform::InMemoryRandomAccessStream>();
    blockingWait(capture.CapturePhotoToStreamAsync(Platform::ImageEncodingProperties::CreatePng(), stream));
    const auto decoder = blockingWait(Platform::cameraPlatform()->CreateBitmapDecoderAsync(stream));
    return blockingWait(decoder->GetSoftwareBitmapAsync());
}

} // namespace

std::vector<Platform::Guid>& imageIds() {
    static std::vector<Platform::Guid> ids;
    return ids;
}

std::string imageIdToText(const Platform::Guid& id) { return Platform::guidToText(id); }

Platform::Guid captureImage(Console& console, DriverConnection& connection) {
    const auto id = Platform::GuidHelper::CreateNewGuid();
    try {
        connection.images.insert_or_assign(imageIdToText(id), takePicture(*connection.mediaCapture));
    } catch (const winrt::hresult_error& error) {
        console.writeLine(describePlatformError(error));
        Halden::currentClock()->sleepFor(pauseAfterFailure);
    }
    return id;
}

Platform::SoftwareBitmap getImage(Console& console, const DriverConnection& connection, const Platform::Guid& id) {
    const auto found = connection.images.find(imageIdToText(id));
    if (found == connection.images.end()) {
        console.writeLine("This camera does not have image ", imageIdToText(id));
        return nullptr;
    }
    console.writeLine("Returning image ", imageIdToText(id));
    return found->second;
}

void deleteImage(Console& console, DriverConnection& connection, const Platform::Guid& id) {
    const auto found = connection.pendingImages.find(imageIdToText(id));
    if (found == connection.pendingImages.end())
        return;
    console.writeLine("Deleting image ", imageIdToText(id));
    connection.pendingImages.erase(found);
}
