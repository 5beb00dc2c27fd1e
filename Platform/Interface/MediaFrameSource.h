#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/Collections.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Platform {

/// One format that a source of an open capture can be set to. A value. Any thread.
struct MediaFrameFormat {
    std::uint32_t Index = 0;  ///< Position in the SupportedFormats of its source, from 0.
    std::uint32_t Width = 0;  ///< In pixels.
    std::uint32_t Height = 0; ///< In pixels.
    double FrameRate = 0.0;   ///< Frames a second; 30 where the camera tells none.
    std::u16string Subtype;   ///< The pixel format's name, "NV12" for instance.
};

/// A source of an open capture. Any thread. Every member raises the errors of the capture's state (see IMediaCapture).
class IMediaFrameSource {
public:
    virtual ~IMediaFrameSource() = default;

    /// What the group's SourceInfos say of this source; never null.
    virtual MediaFrameSourceInfo Info() const = 0;

    /// Each once, at the position that its Index tells. The order is that of the source's
    /// VideoProfileMediaDescription: the hub takes a position in one list for the same position in the other. Empty
    /// where nothing can be set.
    virtual VectorView<MediaFrameFormat> SupportedFormats() const = 0;

    /// Takes an entry of SupportedFormats, unchanged. When the operation has ended, stills have its size, and a stream
    /// that runs goes on in it. Fails with invalidArgument for what is no such entry, with busy where another program
    /// streams, and with fail where the camera sets something else.
    virtual IAsyncAction SetFormatAsync(const MediaFrameFormat& format) = 0;
};
using MediaFrameSource = std::shared_ptr<IMediaFrameSource>;

} // namespace Platform
