#include "Platform/V4l2/FrameSource.h"

#include "Platform/Shared/RunAsync.h"
#include "Platform/V4l2/Discovery/SourceGroup.h"

#include <string_view>

namespace Platform::V4l2 {

MediaFrameSourceInfo FrameSource::Info() const {
    _core->requireCamera("MediaFrameSource.Info");
    return _info;
}

VectorView<MediaFrameFormat> FrameSource::SupportedFormats() const {
    _core->requireCamera("MediaFrameSource.SupportedFormats");
    const CameraGroupHandle group = _core->group();
    return group ? VectorView<MediaFrameFormat>(frameFormats(group->sources.at(_index)))
                 : VectorView<MediaFrameFormat>();
}

IAsyncAction FrameSource::SetFormatAsync(const MediaFrameFormat& format) {
    constexpr std::string_view operation = "MediaFrameSource.SetFormatAsync";
    _core->requireInitialised(operation);
    return Shared::runAsync<void>(_core->pool(), [core = _core, index = _index, wanted = format.Index, operation] {
        Shared::makeReady(*core, [&] {
            core->worker(operation, index)->call<void>(operation, [wanted](CameraSession& session) {
                session.setFormat(wanted);
            });
        });
    });
}

} // namespace Platform::V4l2
