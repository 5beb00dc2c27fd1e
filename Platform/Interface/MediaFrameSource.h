#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/Collections.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Platform {

/// One format that a source of an open capture can be set to.
struct MediaFrameFormat {
    std::uint32_t Index = 0;  // position in the SupportedFormats of its source
    std::uint32_t Width = 0;  // pixels
    std::uint32_t Height = 0; // pixels
    double FrameRate = 0.0;   // frames a second
    std::u16string Subtype;   // the pixel format's name, "NV12" for instance
};

/// A source of an open capture. Any thread; every member may raise.
class IMediaFrameSource {
public:
    virtual ~IMediaFrameSource() = default;

    virtual MediaFrameSourceInfo Info() const = 0;
    virtual VectorView<MediaFrameFormat> SupportedFormats() const = 0;

    /// Takes an entry of SupportedFormats. From then on stills have its size.
    virtual IAsyncAction SetFormatAsync(const MediaFrameFormat& format) = 0;
};
using MediaFrameSource = std::shared_ptr<IMediaFrameSource>;

} // namespace Platform
