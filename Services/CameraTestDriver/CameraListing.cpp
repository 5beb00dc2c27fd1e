#include "Services/CameraTestDriver/CameraListing.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/CameraAccess/CameraSource.h"
#include "Services/CameraAccess/MakeAndModel.h"
#include "Services/CameraAccess/MediaNames.h"

using Platform::blockingWait;

namespace {

void printSource(Console& console, const Platform::IMediaFrameSourceInfo& source,
                 const Platform::IMediaFrameSourceInfo2& source2) {
    console.writeLine("  SourceInfo.  Id: ", source.Id(), " StreamType: ", nameOf(source.MediaStreamType()));
    console.writeLine("  profileId: ", source2.ProfileId(), " SourceKind: ", nameOf(source.SourceKind()));
}

void printDevice(Console& console, const Platform::IDeviceInformation& device) {
    console.writeLine("    DeviceInfo. Id: ", device.Id(), " DeviceInfoKind: ", static_cast<int>(device.Kind()));
    console.writeLine("    Device Name: ", device.Name());
    if (const auto location = device.EnclosureLocation())
        console.writeLine("    LocationPanel: ", nameOf(location->Panel),
                          " inDock: ", static_cast<int>(location->InDock),
                          " inLid: ", static_cast<int>(location->InLid));
}

DriverCamera describe(const Platform::DeviceInformation& device,
                      const Platform::VectorView<Platform::MediaCaptureVideoProfileMediaDescription>& profiles) {
    DriverCamera camera;
    camera.deviceInformation = device;
    camera.profileIndex = bestVideoProfile(profiles, 0.0);
    const auto& profile = profiles.GetAt(static_cast<std::uint32_t>(camera.profileIndex));
    camera.width = static_cast<std::int32_t>(profile.Width);
    camera.height = static_cast<std::int32_t>(profile.Height);
    camera.name = device->Name();
    camera.id = device->Id();
    camera.kind = static_cast<std::int32_t>(device->Kind());

    std::string model;
    std::string make;
    getMakeAndModel(device, model, make);
    camera.make = Halden::toUtf16(make);
    camera.model = Halden::toUtf16(model);
    return camera;
}

} // namespace

void listAvailableCameras(Console& console, DriverContext& context) {
    for (const auto& group : blockingWait(Platform::cameraPlatform()->FindAllAsync())) {
        console.writeLine("Found Source Group. Display Name: ", group->DisplayName(), " Id: ", group->Id());
        for (const auto& source : group->SourceInfos()) {
            const auto source2 = source->asMediaFrameSourceInfo2();
            if (!source2) {
                console.writeLine("Incorrect Windows Version; could not enumerate cameras");
                return;
            }
            printSource(console, *source, *source2);
            if (!isColourVideo(*source)) {
                console.writeLine("Skipping non colour-visual media");
                continue;
            }
            const auto device = source->DeviceInformation();
            printDevice(console, *device);
            context.availableCameras.push_back(describe(device, source2->VideoProfileMediaDescription()));
        }
    }
}

Platform::MediaCapture connectCamera(DriverCamera camera) {
    const auto capture = Platform::cameraPlatform()->CreateMediaCapture();
    const auto found = findCameraSource([&camera](const Platform::IDeviceInformation& device) {
        return device.Id() == camera.id && static_cast<std::int32_t>(device.Kind()) == camera.kind;
    });
    if (found.source)
        openCameraSource(capture, found, camera.profileIndex,
                         [](const auto& source) { return bestVideoProfile(videoProfilesOf(source), 0.0); });
    return capture;
}
