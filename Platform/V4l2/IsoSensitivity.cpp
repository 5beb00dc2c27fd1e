#include "Platform/V4l2/IsoSensitivity.h"

#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/RunAsync.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"
#include "Platform/V4l2/MenuCall.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Platform::V4l2 {
namespace {

bool isAutomatic(KernelControls& controls) {
    const auto automatic = controls.find({V4L2_CID_ISO_SENSITIVITY_AUTO});
    return automatic && controls.read(*automatic) == V4L2_ISO_SENSITIVITY_AUTO;
}

void setSpeed(NumberMenu& menu, const DeviceNode& node, std::uint32_t speed, std::string_view operation) {
    const auto distance = [&](const NumberMenu::Entries::value_type& entry) {
        return std::abs(NumberMenu::numberOf(entry) - speed);
    };
    const auto nearest = std::min_element(menu.entries.begin(), menu.entries.end(),
                                          [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    if (nearest == menu.entries.end())
        throw refusedError(operation, node.path());
    const auto automatic = menu.controls.find({V4L2_CID_ISO_SENSITIVITY_AUTO});
    if (automatic && isAutomatic(menu.controls) && !menu.controls.write(*automatic, V4L2_ISO_SENSITIVITY_MANUAL))
        throw refusedError(operation, node.path());
    if (!menu.controls.write(*menu.control, nearest->first))
        throw refusedError(operation, node.path());
}

} // namespace

std::vector<std::uint32_t> IsoSensitivity::speeds(std::string_view operation) const {
    return callOnMenu<std::vector<std::uint32_t>>(
        *_core, operation, V4L2_CID_ISO_SENSITIVITY, [operation](NumberMenu& menu, DeviceNode& node) {
            if (!menu.isUsable())
                throw Shared::platformError(operation, node.path(), winrt::result::illegalMethodCall,
                                            "the camera has no such control");
            std::vector<std::uint32_t> speeds;
            for (const auto& entry : menu.entries)
                speeds.push_back(static_cast<std::uint32_t>(NumberMenu::numberOf(entry)));
            std::sort(speeds.begin(), speeds.end());
            return speeds;
        });
}

bool IsoSensitivity::Supported() const {
    return callOnMenu<bool>(*_core, "IsoSpeedControl.Supported", V4L2_CID_ISO_SENSITIVITY,
                            [](NumberMenu& menu, DeviceNode&) { return menu.isUsable(); });
}

bool IsoSensitivity::Auto() const {
    return callOnMenu<bool>(*_core, "IsoSpeedControl.Auto", V4L2_CID_ISO_SENSITIVITY,
                            [](NumberMenu& menu, DeviceNode&) { return isAutomatic(menu.controls); });
}

std::uint32_t IsoSensitivity::Min() const { return speeds("IsoSpeedControl.Min").front(); }

std::uint32_t IsoSensitivity::Max() const { return speeds("IsoSpeedControl.Max").back(); }

std::uint32_t IsoSensitivity::Step() const {
    const auto all = speeds("IsoSpeedControl.Step");
    std::uint32_t step = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t i = 1; i < all.size(); ++i)
        step = std::min(step, all[i] - all[i - 1]);
    return all.size() > 1 ? step : 0;
}

std::uint32_t IsoSensitivity::Value() const {
    constexpr std::string_view operation = "IsoSpeedControl.Value";
    return callOnMenu<std::uint32_t>(*_core, operation, V4L2_CID_ISO_SENSITIVITY,
                                     [operation](NumberMenu& menu, DeviceNode& node) {
                                         const auto value = menu.value();
                                         if (!value)
                                             throw refusedError(operation, node.path());
                                         return static_cast<std::uint32_t>(*value);
                                     });
}

IAsyncAction IsoSensitivity::SetValueAsync(std::uint32_t value) {
    constexpr std::string_view operation = "IsoSpeedControl.SetValueAsync";
    _core->requireInitialised(operation);
    return Shared::runAsync<void>(_core->pool(), [core = _core, value, operation] {
        core->worker(operation, 0)->call<void>(operation, [value, operation](CameraSession& session) {
            session.change({}, [&] {
                NumberMenu menu(session.controls(), V4L2_CID_ISO_SENSITIVITY);
                setSpeed(menu, session.node(), value, operation);
            });
        });
    });
}

} // namespace Platform::V4l2
