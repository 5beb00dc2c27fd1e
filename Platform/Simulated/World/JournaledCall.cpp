#include "Platform/Simulated/World/JournaledCall.h"

namespace Platform::Simulated {

Json::Value journalResult(bool value) { return value; }

Json::Value journalResult(const std::u16string& text) { return journalText(text); }

Json::Value journalResult(MediaFrameReaderStartStatus status) { return static_cast<int>(status); }

Json::Value journalResult(const MediaDeviceControlCapabilities& capabilities) {
    Json::Value result;
    result["Supported"] = capabilities.Supported;
    result["AutoModeSupported"] = capabilities.AutoModeSupported;
    result["Min"] = journalNumber(capabilities.Min);
    result["Max"] = journalNumber(capabilities.Max);
    result["Step"] = journalNumber(capabilities.Step);
    return result;
}

Json::Value journalResult(const DeviceInformation& device) { return journalText(device->Id()); }

Json::Value journalResult(const MediaFrameSourceGroup& group) { return journalText(group->Id()); }

Json::Value journalResult(const VectorView<MediaFrameSourceGroup>& groups) {
    Json::Value result(Json::arrayValue);
    for (const auto& group : groups)
        result.append(journalText(group->Id()));
    return result;
}

Json::Value journalResult(const MapView<MediaFrameSource>& sources) {
    Json::Value result(Json::arrayValue);
    for (const auto& entry : sources)
        result.append(journalText(entry.first));
    return result;
}

} // namespace Platform::Simulated
