#include "Platform/Simulated/Scenario/FaultsReader.h"

#include <array>

namespace Platform::Simulated {
namespace {

struct Operation {
    FaultPlace place;
    const char* name;
};

constexpr std::array operations{
    Operation{FaultPlace::Top, "MediaFrameSourceGroup.GetDeviceSelector"},
    Operation{FaultPlace::Top, "DeviceInformation.CreateWatcher"},
    Operation{FaultPlace::Top, "DeviceWatcher.Start"},
    Operation{FaultPlace::Top, "MediaFrameSourceGroup.FindAllAsync"},
    Operation{FaultPlace::Top, "DeviceInformation.CreateFromIdAsync"},
    Operation{FaultPlace::Group, "MediaFrameSourceGroup.FromIdAsync"},
    Operation{FaultPlace::Camera, "MediaCapture.InitializeAsync"},
    Operation{FaultPlace::Camera, "MediaCapture.FrameSources"},
    Operation{FaultPlace::Camera, "MediaFrameSource.SetFormatAsync"},
    Operation{FaultPlace::Camera, "MediaCapture.CreateFrameReaderAsync"},
    Operation{FaultPlace::Camera, "MediaFrameReader.StartAsync"},
    Operation{FaultPlace::Camera, "MediaFrameReader.StopAsync"},
    Operation{FaultPlace::Camera, "MediaCapture.Close"},
    Operation{FaultPlace::Camera, "MediaCapture.CapturePhotoToStreamAsync"},
    Operation{FaultPlace::Camera, "VideoDeviceController"},
    Operation{FaultPlace::Camera, "MediaDeviceControl.Capabilities"},
    Operation{FaultPlace::Camera, "ExposureControl.SetAutoAsync"},
    Operation{FaultPlace::Camera, "ExposureControl.SetValueAsync"},
    Operation{FaultPlace::Camera, "FocusControl.SetPresetAsync"},
    Operation{FaultPlace::Camera, "WhiteBalanceControl.SetPresetAsync"},
    Operation{FaultPlace::Camera, "IsoSpeedControl.SetValueAsync"},
};

FaultRule readRule(const JsonPlace& json) {
    FaultRule rule;
    JsonObjectReader reader(json);
    reader.readText("message", rule.message);
    reader.optional("code", [&](const JsonPlace& place) { rule.code = place.asInt(); });
    reader.optional("after", [&](const JsonPlace& place) { rule.after = place.asCount(); });
    reader.optional("times", [&](const JsonPlace& place) {
        if (!place.isNull())
            rule.times = place.asCount();
    });
    reader.optional("delayMs", [&](const JsonPlace& place) { rule.delay = place.asMilliseconds(); });
    reader.readBool("fails", rule.fails);
    reader.finish();
    return rule;
}

} // namespace

Faults readFaults(const JsonPlace& json, FaultPlace place) {
    Faults faults;
    JsonObjectReader reader(json);
    for (const Operation& operation : operations) {
        if (operation.place != place)
            continue;
        reader.optional(operation.name, [&](const JsonPlace& rule) { faults.add(operation.name, readRule(rule)); });
    }
    reader.finish();
    return faults;
}

} // namespace Platform::Simulated
