#include "Platform/Simulated/FrameSource.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Simulated/Session/CameraCall.h"
#include "Platform/Simulated/SourceGroup.h"

#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

void requireFormat(const SourceDefinition& source, const MediaFrameFormat& format, const std::u16string& device) {
    const bool known = format.Index < source.formats.size() && source.formats[format.Index].Width == format.Width &&
                       source.formats[format.Index].Height == format.Height;
    if (!known)
        throw Shared::platformError("MediaFrameSource.SetFormatAsync", Halden::toUtf8(device),
                                    winrt::result::invalidArgument, "The source does not have that format.");
}

} // namespace

FrameSource::FrameSource(std::shared_ptr<CaptureCore> core, std::shared_ptr<const SourceDefinition> definition)
    : _core(std::move(core)), _definition(std::move(definition)),
      _camera(_core->simulation()->camera(_definition->device.id)) {}

MediaFrameSourceInfo FrameSource::Info() const {
    _core->requireOpen("MediaFrameSource.Info", _camera);
    return std::make_shared<SourceInfo>(_definition);
}

VectorView<MediaFrameFormat> FrameSource::SupportedFormats() const {
    _core->requireOpen("MediaFrameSource.SupportedFormats", _camera);
    std::vector<MediaFrameFormat> formats;
    for (const FormatDefinition& format : _definition->formats)
        formats.push_back({static_cast<std::uint32_t>(formats.size()), format.Width, format.Height, format.FrameRate,
                           format.Subtype});
    return formats;
}

IAsyncAction FrameSource::SetFormatAsync(const MediaFrameFormat& format) {
    constexpr const char* operation = "MediaFrameSource.SetFormatAsync";
    Json::Value arguments(Json::arrayValue);
    arguments.append(journalText(id()));
    arguments.append(format.Index);
    return readyingCallAsync(_core, _camera, {operation, {}, nullptr, std::move(arguments)},
                             [core = _core, definition = _definition, camera = _camera, format] {
                                 core->requireOpen(operation, camera);
                                 requireFormat(*definition, format, camera->deviceId());
                                 core->setFormat(camera, format);
                             });
}

} // namespace Platform::Simulated
