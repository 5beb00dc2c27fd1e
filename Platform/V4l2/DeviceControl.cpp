#include "Platform/V4l2/DeviceControl.h"

#include "Platform/V4l2/Controls/ControlAdapter.h"

#include <optional>

namespace Platform::V4l2 {

template <typename T, typename Work> T DeviceControl::ask(std::string_view operation, Work work) const {
    return _core->worker(operation, 0)->call<T>(operation, [mapping = _mapping, work](CameraSession& session) -> T {
        session.requirePresence();
        ControlAdapter adapter(session.controls(), *mapping);
        return work(adapter);
    });
}

template <typename Work> bool DeviceControl::set(std::string_view operation, Work work) {
    return _core->worker(operation, 0)->call<bool>(operation, [mapping = _mapping, work](CameraSession& session) {
        session.requirePresence();
        return session.change(mapping->movement, [&] {
            ControlAdapter adapter(session.controls(), *mapping);
            return work(adapter);
        });
    });
}

MediaDeviceControlCapabilities DeviceControl::Capabilities() const {
    return ask<MediaDeviceControlCapabilities>("MediaDeviceControl.Capabilities",
                                               [](ControlAdapter& adapter) { return adapter.capabilities(); });
}

bool DeviceControl::TrySetValue(double value) {
    return set("MediaDeviceControl.TrySetValue", [value](ControlAdapter& adapter) { return adapter.setValue(value); });
}

bool DeviceControl::TryGetValue(double& value) const {
    const auto read = ask<std::optional<double>>("MediaDeviceControl.TryGetValue",
                                                 [](ControlAdapter& adapter) { return adapter.value(); });
    value = read.value_or(value);
    return read.has_value();
}

bool DeviceControl::TrySetAuto(bool on) {
    return set("MediaDeviceControl.TrySetAuto", [on](ControlAdapter& adapter) { return adapter.setAuto(on); });
}

bool DeviceControl::TryGetAuto(bool& on) const {
    const auto read = ask<std::optional<bool>>("MediaDeviceControl.TryGetAuto",
                                               [](ControlAdapter& adapter) { return adapter.isAuto(); });
    on = read.value_or(on);
    return read.has_value();
}

} // namespace Platform::V4l2
