#include "Platform/Simulated/Scenario/CameraReader.h"

#include "Platform/Simulated/Scenario/FaultsReader.h"

#include <system_error>

namespace Platform::Simulated {
namespace {

void readRefusals(const JsonPlace& json, ControlDefinition& control) {
    for (const JsonPlace& place : json.asList()) {
        const std::string operation = place.asUtf8();
        if (operation == "TrySetValue")
            control.refusesSetValue = true;
        else if (operation == "TryGetValue")
            control.refusesGetValue = true;
        else if (operation == "TrySetAuto")
            control.refusesSetAuto = true;
        else if (operation == "TryGetAuto")
            control.refusesGetAuto = true;
        else
            place.raise("must be TrySetValue, TryGetValue, TrySetAuto or TryGetAuto");
    }
}

void readControl(const JsonPlace& json, ControlDefinition& control) {
    JsonObjectReader reader(json);
    reader.readBool("supported", control.supported);
    reader.readDouble("min", control.min);
    reader.readDouble("max", control.max);
    reader.readDouble("step", control.step);
    reader.readDouble("value", control.value);
    reader.readBool("auto", control.automatic);
    reader.readBool("autoModeSupported", control.autoModeSupported);
    reader.optional("latch", [&](const JsonPlace& place) {
        if (!place.isNull())
            control.latch = place.asDouble();
    });
    reader.optional("refuse", [&](const JsonPlace& place) { readRefusals(place, control); });
    reader.finish();
}

void readValueControl(const JsonPlace& json, ValueControlDefinition& control) {
    JsonObjectReader reader(json);
    const auto readNumber = [&](const char* name, std::int64_t& value) {
        reader.optional(name, [&](const JsonPlace& place) { value = place.asCount(); });
    };
    reader.readBool("supported", control.supported);
    reader.readBool("auto", control.automatic);
    readNumber("min", control.min);
    readNumber("max", control.max);
    readNumber("step", control.step);
    readNumber("value", control.value);
    reader.finish();
}

void readIsoControl(const JsonPlace& json, ValueControlDefinition& control) {
    readValueControl(json, control);
    for (const char* name : {"min", "max", "step", "value"})
        if (json.value().isMember(name))
            json.member(name).asUnsigned(); // an ISO speed has 32 bits
}

void readPresetControl(const JsonPlace& json, PresetControlDefinition& control) {
    JsonObjectReader reader(json);
    reader.readBool("supported", control.supported);
    reader.optional("preset", [&](const JsonPlace& place) { control.preset = place.asInt(); });
    reader.finish();
}

void readCompensation(const JsonPlace& json, CompensationDefinition& control) {
    JsonObjectReader reader(json);
    reader.readBool("supported", control.supported);
    reader.optional("value", [&](const JsonPlace& place) { control.value = static_cast<float>(place.asDouble()); });
    reader.finish();
}

CaptureOutcome readOutcome(const JsonPlace& place) {
    const std::string name = place.asUtf8();
    if (name == "picture")
        return CaptureOutcome::Picture;
    if (name == "error")
        return CaptureOutcome::Error;
    if (name == "never")
        return CaptureOutcome::Never;
    place.raise("must be picture, error or never");
}

std::filesystem::path readPicture(const JsonPlace& place, const std::filesystem::path& folder) {
    std::filesystem::path file = folder / place.asUtf8();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        place.raise("there is no such file: " + file.native());
    return file;
}

void readCapture(const JsonPlace& json, const std::filesystem::path& folder, CaptureDefinition& capture) {
    JsonObjectReader reader(json);
    reader.optional("delayMs", [&](const JsonPlace& place) { capture.delay = place.asMilliseconds(); });
    reader.optional("outcome", [&](const JsonPlace& place) { capture.outcome = readOutcome(place); });
    reader.optional("picture", [&](const JsonPlace& place) {
        if (!place.isNull())
            capture.picture = readPicture(place, folder);
    });
    reader.readDouble("neutralExposure", capture.neutralExposure);
    reader.finish();
}

} // namespace

CameraDefinition readCamera(const JsonPlace& json, const std::filesystem::path& folder) {
    CameraDefinition camera;
    JsonObjectReader reader(json);
    const auto read = [&](const char* name, auto& control, auto function) {
        reader.optional(name, [&](const JsonPlace& place) { function(place, control); });
    };
    read("exposure", camera.exposure, readControl);
    read("focus", camera.focus, readControl);
    read("whiteBalance", camera.whiteBalance, readControl);
    read("brightness", camera.brightness, readControl);
    read("contrast", camera.contrast, readControl);
    read("exposureControl", camera.exposureControl, readValueControl);
    read("focusControl", camera.focusControl, readPresetControl);
    read("whiteBalanceControl", camera.whiteBalanceControl, readPresetControl);
    read("isoSpeedControl", camera.isoSpeedControl, readIsoControl);
    read("exposureCompensationControl", camera.exposureCompensationControl, readCompensation);
    reader.optional("capture", [&](const JsonPlace& place) { readCapture(place, folder, camera.capture); });
    reader.optional("faults", [&](const JsonPlace& place) { camera.faults = readFaults(place, FaultPlace::Camera); });
    reader.finish();
    return camera;
}

} // namespace Platform::Simulated
