#include "Services/CameraTestDriver/Adjustments.h"

#include "Platform/Interface/AsyncWait.h"

#include <cstdint>
#include <string_view>

using Platform::blockingWait;

namespace {

/// What a command says, each with the blanks at its ends.
struct StepTexts {
    std::string_view unsupported;
    std::string_view autoRefused;
    std::string_view readRefused;
    std::string_view setRefused;
    std::string_view range;
    std::string_view set;
};

enum class AfterRefusal { GoOn, Stop };

double printable(double value) { return value; }
std::uint32_t printable(std::uint32_t value) { return value; }
std::int64_t printable(Platform::TimeSpan time) { return time.count(); }

template <typename Value> struct Step {
    Value min;
    Value max;
    Value value;
    Value latched;
};

template <typename Value>
void report(Console& console, std::string_view range, std::string_view set, const Step<Value>& step) {
    console.writeLine(range, printable(step.min), " , ", printable(step.max)); // there is no closing bracket
    console.writeLine(set, printable(step.value), ". Latched to: ", printable(step.latched));
}

void stepOlder(Console& console, Platform::IMediaDeviceControl& control, bool up, AfterRefusal afterRefusal,
               const StepTexts& texts) {
    if (!control.Capabilities().Supported)
        return console.writeLine(texts.unsupported);

    const auto isTheEnd = [&](bool isDone, std::string_view refusal) {
        if (!isDone)
            console.writeLine(refusal);
        return !isDone && afterRefusal == AfterRefusal::Stop;
    };
    if (isTheEnd(control.TrySetAuto(false), texts.autoRefused))
        return;
    const auto capabilities = control.Capabilities(); // with the automatic off they may be others
    double value = 0.0;
    if (isTheEnd(control.TryGetValue(value), texts.readRefused))
        return;
    value = up ? value + capabilities.Step : value - capabilities.Step;
    if (isTheEnd(control.TrySetValue(value), texts.setRefused))
        return;
    double latched = 0.0;
    if (control.TryGetValue(latched))
        report<double>(console, texts.range, texts.set, {capabilities.Min, capabilities.Max, value, latched});
}

/// For both controls of the newer generation that have a value.
template <typename Control>
void stepNewer(Console& console, Control& control, bool up, std::string_view range, std::string_view set) {
    const auto step = control.Step();
    const auto min = control.Min();
    const auto max = control.Max();
    const auto before = control.Value();
    const auto value = up ? before + step : before - step;
    blockingWait(control.SetValueAsync(value));
    report(console, range, set, Step<decltype(min + step)>{min, max, value, control.Value()});
}

} // namespace

void adjustExposure(Console& console, Platform::MediaCapture capture, bool up) {
    const auto controller = capture->VideoDeviceController();
    const auto newer = controller->ExposureControl();
    if (newer->Supported()) {
        blockingWait(newer->SetAutoAsync(false));
        stepNewer(console, *newer, up, "ExposureControl range: [", "ExposureControl set to: ");
        return;
    }
    stepOlder(console, *controller->Exposure(), up, AfterRefusal::Stop,
              {.unsupported = "Exposure changes not supported",
               .autoRefused = "Can't disable auto exposure",
               .readRefused = "Failed to read exposure",
               .setRefused = "Failed to set exposure",
               .range = "Exposure range: [",
               .set = "Exposure set to: "});
}

void adjustBrightness(Console& console, Platform::MediaCapture capture, bool up) {
    stepOlder(console, *capture->VideoDeviceController()->Brightness(), up, AfterRefusal::GoOn,
              {.unsupported = "Brightness changes not supported ",
               .autoRefused = "Can't disable auto brightness",
               .readRefused = "Failed to read Brightness",
               .setRefused = "Failed to set Brightness",
               .range = "Brightness range: [",
               .set = "Brightness set to: "});
}

void adjustContrast(Console& console, Platform::MediaCapture capture, bool up) {
    stepOlder(console, *capture->VideoDeviceController()->Contrast(), up, AfterRefusal::GoOn,
              {.unsupported = "Contrast changes not supported ",
               .autoRefused = "Can't disable auto contrast",
               .readRefused = "Failed to read Contrast",
               .setRefused = "Failed to set Contrast",
               .range = "Contrast range: [",
               .set = "Contrast set to: "});
}

void adjustIso(Console& console, Platform::MediaCapture capture, bool up) {
    const auto control = capture->VideoDeviceController()->IsoSpeedControl();
    if (!control->Supported())
        return console.writeLine("IsoSpeedControl changes not supported");
    if (control->Auto())
        return console.writeLine("IsoSpeedControl is auto ");
    stepNewer(console, *control, up, "IsoSpeedControl range: [", "IsoSpeedControl set to: ");
}
