#include "Platform/V4l2/ExposureBias.h"

#include "Platform/V4l2/Kernel/DeviceErrors.h"
#include "Platform/V4l2/MenuCall.h"

#include <string_view>

namespace Platform::V4l2 {

bool ExposureBias::Supported() const {
    return callOnMenu<bool>(*_core, "ExposureCompensationControl.Supported", V4L2_CID_AUTO_EXPOSURE_BIAS,
                            [](NumberMenu& menu, DeviceNode&) { return menu.isUsable(); });
}

float ExposureBias::Value() const {
    constexpr std::string_view operation = "ExposureCompensationControl.Value";
    return callOnMenu<float>(*_core, operation, V4L2_CID_AUTO_EXPOSURE_BIAS,
                             [operation](NumberMenu& menu, DeviceNode& node) {
                                 const auto value = menu.value();
                                 if (!value)
                                     throw refusedError(operation, node.path());
                                 return static_cast<float>(*value);
                             });
}

} // namespace Platform::V4l2
