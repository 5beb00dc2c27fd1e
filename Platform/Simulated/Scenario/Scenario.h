#pragma once

#include "Platform/Interface/MediaCaptureVideoProfileMediaDescription.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/Shared/DeviceInformationValue.h"
#include "Platform/Simulated/Scenario/Faults.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

// What a scenario file says, member by member, with its defaults. Plain values; a scenario that has been
// read never changes, but for the counters in its Faults.

namespace Platform::Simulated {

using FormatDefinition = MediaCaptureVideoProfileMediaDescription;

struct SourceDefinition {
    std::u16string id;
    Platform::MediaStreamType streamType = MediaStreamType::VideoPreview;
    MediaFrameSourceKind kind = MediaFrameSourceKind::Color;
    std::u16string profileId;
    Shared::DeviceDescription device;
    std::vector<FormatDefinition> profiles;
    std::vector<FormatDefinition> formats;
    bool sourceInfo2 = true;
};

struct GroupDefinition {
    std::u16string id;
    std::u16string displayName;
    Faults faults;
    std::vector<SourceDefinition> sources;
    Shared::DeviceDescription watched;
    std::string text; // the whole object in one form, to tell whether it has changed
};

/// A device node or a container.
struct NodeDefinition {
    std::u16string id;
    PropertyMap properties;
};

/// A control of the older generation; see MediaDeviceControlCapabilities for the unit.
struct ControlDefinition {
    bool supported = false;
    double min = 0.0;
    double max = 0.0;
    double step = 0.0; // 0: no grid
    double value = 0.0;
    bool automatic = false;
    bool autoModeSupported = true;
    std::optional<double> latch;
    bool refusesSetValue = false;
    bool refusesGetValue = false;
    bool refusesSetAuto = false;
    bool refusesGetAuto = false;

    bool operator==(const ControlDefinition&) const = default;
};

/// A control of the newer generation that has a value: exposure in ticks of 100 ns, or an ISO speed.
struct ValueControlDefinition {
    bool supported = false;
    bool automatic = false;
    std::int64_t min = 0;
    std::int64_t max = 0;
    std::int64_t step = 0;
    std::int64_t value = 0;

    bool operator==(const ValueControlDefinition&) const = default;
};

/// A control of the newer generation that has presets, by their numbers.
struct PresetControlDefinition {
    bool supported = false;
    int preset = 0;

    bool operator==(const PresetControlDefinition&) const = default;
};

struct CompensationDefinition {
    bool supported = false;
    float value = 0.0F; // stops
};

enum class CaptureOutcome { Picture, Error, Never };

struct CaptureDefinition {
    std::chrono::milliseconds delay{0}; // from the call to its completion
    CaptureOutcome outcome = CaptureOutcome::Picture;
    std::filesystem::path picture; // empty: the test chart
    double neutralExposure = -6.0; // log2 of seconds
};

struct CameraDefinition {
    ControlDefinition exposure;
    ControlDefinition focus;
    ControlDefinition whiteBalance;
    ControlDefinition brightness;
    ControlDefinition contrast;
    ValueControlDefinition exposureControl{false, false, 1000, 10'000'000, 1000, 333'333};
    PresetControlDefinition focusControl;
    PresetControlDefinition whiteBalanceControl;
    ValueControlDefinition isoSpeedControl{false, false, 100, 800, 100, 100};
    CompensationDefinition exposureCompensationControl;
    CaptureDefinition capture;
    Faults faults;
};

struct Scenario {
    std::vector<GroupDefinition> groups;
    std::map<std::u16string, std::size_t> groupOfWatched; // the first with that watched device, by the device's id
    std::vector<NodeDefinition> deviceNodes;
    std::vector<NodeDefinition> containers;
    std::map<std::u16string, CameraDefinition> cameras; // by device id
    Faults faults;
    std::filesystem::path journal; // absolute; empty: none
};

} // namespace Platform::Simulated
