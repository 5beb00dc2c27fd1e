#pragma once

#include "Platform/Interface/MediaFrameSource.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>
#include <string>

namespace Platform::Simulated {

/// A source of an open capture. Any thread.
class FrameSource final : public IMediaFrameSource {
public:
    FrameSource(std::shared_ptr<CaptureCore> core, std::shared_ptr<const SourceDefinition> definition);

    MediaFrameSourceInfo Info() const override;
    VectorView<MediaFrameFormat> SupportedFormats() const override;
    IAsyncAction SetFormatAsync(const MediaFrameFormat& format) override;

    const std::u16string& id() const { return _definition->id; }
    const std::shared_ptr<CaptureCore>& core() const { return _core; }
    const std::shared_ptr<SimulatedCamera>& camera() const { return _camera; }

private:
    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<const SourceDefinition> _definition; // when the capture was asked for its sources
    const std::shared_ptr<SimulatedCamera> _camera;
};

} // namespace Platform::Simulated
