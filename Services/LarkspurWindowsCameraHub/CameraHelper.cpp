#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/CameraAccess/CameraSource.h"
#include "Services/CameraAccess/MakeAndModel.h"
#include "Services/CameraAccess/MediaNames.h"
#include "Services/CameraAccess/PlatformError.h"
#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <sstream>

using Halden::toUtf8;
using Platform::blockingWait;

namespace {

void logSource(const Platform::IMediaFrameSourceInfo& source, const Platform::IMediaFrameSourceInfo2& source2) {
    LOG4CXX_DEBUG(serviceLogger(),
                  "  SourceInfo.  Id: " << toUtf8(source.Id()) << " StreamType: " << nameOf(source.MediaStreamType()));
    LOG4CXX_DEBUG(serviceLogger(),
                  "  profileId: " << toUtf8(source2.ProfileId()) << " SourceKind: " << nameOf(source.SourceKind()));
}

void logDevice(const Platform::IDeviceInformation& device) {
    LOG4CXX_DEBUG(serviceLogger(), "    DeviceInfo. Id: " << toUtf8(device.Id())
                                                          << " DeviceInfoKind: " << static_cast<int>(device.Kind()));
    LOG4CXX_DEBUG(serviceLogger(), "    Device Name: " << toUtf8(device.Name()));
    if (const auto location = device.EnclosureLocation()) {
        LOG4CXX_DEBUG(serviceLogger(), "    LocationPanel: " << static_cast<int>(location->Panel)
                                                             << " inDock: " << static_cast<int>(location->InDock)
                                                             << " inLid: " << static_cast<int>(location->InLid));
    }
}

/// Opens the camera only for as long as it takes to read its exposure range.
void learnExposure(FoundCamera& camera) {
    const ExposureRange range = getExposureRange(CameraHelper::CreateMediaCapture(camera));
    camera.description.exposureMinValueInUs = static_cast<std::int32_t>(range.minExposureInUs().count());
    camera.description.exposureMaxValueInUs = static_cast<std::int32_t>(range.maxExposureInUs().count());
    LOG4CXX_DEBUG(serviceLogger(), "Exposure range: [" << camera.description.exposureMinValueInUs << "us, "
                                                       << camera.description.exposureMaxValueInUs << "us]");
}

FoundCamera describeSource(const Platform::MediaFrameSourceInfo& source,
                           const Platform::MediaFrameSourceInfo2& source2) {
    FoundCamera camera;
    const auto device = source->DeviceInformation();
    logDevice(*device);

    const std::int32_t best = CameraHelper::PickBestVideoProfile(source, 0.0);
    const auto profile = source2->VideoProfileMediaDescription().GetAt(static_cast<std::uint32_t>(best));
    camera.description.resolutionX = static_cast<std::int32_t>(profile.Width);
    camera.description.resolutionY = static_cast<std::int32_t>(profile.Height);
    camera.description.name = toUtf8(device->Name());
    camera.profileIndex = best;
    camera.description.uid = toUtf8(device->Id());
    camera.deviceInformation = device;

    getMakeAndModel(device, camera.description.model, camera.description.make);
    LOG4CXX_DEBUG(serviceLogger(),
                  "    Manufacturer: " << camera.description.make << ", Model: " << camera.description.model);
    learnExposure(camera);
    return camera;
}

} // namespace

std::vector<FoundCamera> CameraHelper::processDeviceInfo(Platform::DeviceInformation device) {
    std::vector<FoundCamera> cameras;
    try {
        const auto group = blockingWait(Platform::cameraPlatform()->FromIdAsync(device->Id()));
        LOG4CXX_DEBUG(serviceLogger(), "Processing Source Group. Display Name: " << toUtf8(group->DisplayName())
                                                                                 << " Id: " << toUtf8(group->Id()));
        for (const auto& source : group->SourceInfos()) {
            const auto source2 = source->asMediaFrameSourceInfo2();
            if (!source2) {
                LOG4CXX_ERROR(serviceLogger(), "Incorrect Windows Version; could not enumerate cameras");
                break;
            }
            logSource(*source, *source2);
            if (isColourVideo(*source))
                cameras.push_back(describeSource(source, source2));
            else
                LOG4CXX_DEBUG(serviceLogger(), "Skipping non colour-visual media");
        }
    } catch (const winrt::hresult_error& error) {
        LOG4CXX_ERROR(serviceLogger(), describePlatformError(error));
    }
    return cameras;
}

std::int32_t CameraHelper::PickBestVideoProfile(Platform::MediaFrameSourceInfo source, double minimumFrameRate) {
    const auto profiles = videoProfilesOf(source);
    const std::int32_t best = bestVideoProfile(profiles, minimumFrameRate);
    const auto& profile = profiles.GetAt(static_cast<std::uint32_t>(best));
    LOG4CXX_DEBUG(serviceLogger(), "   Best Format:");
    printMediaDesc(profile);
    return best;
}

Platform::MediaCapture CameraHelper::CreateMediaCapture(FoundCamera camera) {
    auto capture = Platform::cameraPlatform()->CreateMediaCapture();
    try {
        const auto found = findCameraSource([&camera](const Platform::IDeviceInformation& device) {
            return toUtf8(device.Id()) == camera.description.uid;
        });
        if (found.source)
            openCameraSource(capture, found, camera.profileIndex,
                             [](const auto& source) { return PickBestVideoProfile(source, 0.0); });
    } catch (const winrt::hresult_error& error) {
        capture->Close();
        LOG4CXX_ERROR(serviceLogger(), describePlatformError(error));
    }
    return capture;
}

void printMediaDesc(Platform::MediaCaptureVideoProfileMediaDescription description) {
    std::ostringstream line;
    line << toUtf8(description.Subtype) << ": " << description.Width << "x" << description.Height << " @ "
         << static_cast<std::int64_t>(description.FrameRate) << "."
         << static_cast<std::int64_t>(description.FrameRate * 100.0) % 100 << " fps";
    LOG4CXX_DEBUG(serviceLogger(), line.str());
}
