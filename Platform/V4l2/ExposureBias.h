#pragma once

#include "Platform/Interface/ExposureCompensationControl.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// The automatic's bias on V4L2_CID_AUTO_EXPOSURE_BIAS. Any thread.
class ExposureBias final : public IExposureCompensationControl {
public:
    explicit ExposureBias(std::shared_ptr<CaptureCore> core) : _core(std::move(core)) {}

    bool Supported() const override;
    float Value() const override;

private:
    const std::shared_ptr<CaptureCore> _core;
};

} // namespace Platform::V4l2
