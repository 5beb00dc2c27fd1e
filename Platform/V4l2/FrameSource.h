#pragma once

#include "Platform/Interface/MediaFrameSource.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// A source of an open capture. Any thread.
class FrameSource final : public IMediaFrameSource {
public:
    FrameSource(std::shared_ptr<CaptureCore> core, MediaFrameSourceInfo info, std::size_t index)
        : _core(std::move(core)), _info(std::move(info)), _index(index) {}

    MediaFrameSourceInfo Info() const override;
    VectorView<MediaFrameFormat> SupportedFormats() const override;
    IAsyncAction SetFormatAsync(const MediaFrameFormat& format) override;

    const std::shared_ptr<CaptureCore>& core() const { return _core; }
    /// Position in the group's sources.
    std::size_t index() const { return _index; }

private:
    const std::shared_ptr<CaptureCore> _core;
    const MediaFrameSourceInfo _info;
    const std::size_t _index;
};

} // namespace Platform::V4l2
