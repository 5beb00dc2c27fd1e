#pragma once

#include "Platform/Interface/IsoSpeedControl.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

/// ISO speed on V4L2_CID_ISO_SENSITIVITY and its automatic. The kernel's menu of speeds is shown as a range whose
/// step is the smallest distance of two speeds; a value goes to the nearest speed. Any thread.
class IsoSensitivity final : public IIsoSpeedControl {
public:
    explicit IsoSensitivity(std::shared_ptr<CaptureCore> core) : _core(std::move(core)) {}

    bool Supported() const override;
    bool Auto() const override;
    std::uint32_t Min() const override;
    std::uint32_t Max() const override;
    std::uint32_t Step() const override;
    std::uint32_t Value() const override;
    /// Turns the automatic off first.
    IAsyncAction SetValueAsync(std::uint32_t value) override;

private:
    std::vector<std::uint32_t> speeds(std::string_view operation) const;

    const std::shared_ptr<CaptureCore> _core;
};

} // namespace Platform::V4l2
