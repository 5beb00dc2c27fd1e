#include "Platform/V4l2/V4l2Platform.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformBase.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/RunAsync.h"
#include "Platform/V4l2/Capture.h"
#include "Platform/V4l2/Discovery/DeviceCatalog.h"
#include "Platform/V4l2/Discovery/SourceGroup.h"
#include "Platform/V4l2/Watcher.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Platform::V4l2 {
namespace {

/// Matches the one kind of device that this platform watches.
constexpr const char16_t* cameraSelector = u"SUBSYSTEM==\"video4linux\"";

bool equalWithoutCase(const std::u16string& a, const std::u16string& b) {
    const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

/// Null where nothing in the group has that id.
DeviceInformation deviceWithin(const CameraGroup& group, const std::u16string& id, DeviceInformationKind kind) {
    if (kind == DeviceInformationKind::DeviceContainer) {
        auto container = groupContainer(group);
        return equalWithoutCase(container->Id(), id) ? container : nullptr;
    }
    for (const CameraSource& source : group.sources)
        if (source.id == id)
            return sourceDevice(group, source, kind);
    return nullptr;
}

winrt::hresult_error notFound(const char* operation, const std::u16string& id) {
    return Shared::platformError(operation, Halden::toUtf8(id), winrt::result::notFound, "there is no such device");
}

class V4l2Platform final : public Shared::PlatformBase {
public:
    V4l2Platform(CaptureSurroundings surroundings, std::shared_ptr<DeviceLister> lister)
        : PlatformBase(surroundings.pool), _surroundings(std::move(surroundings)), _lister(std::move(lister)),
          _catalog(std::make_shared<DeviceCatalog>(_surroundings.calls, _lister, _surroundings.pool,
                                                   _surroundings.limits.answer)) {}

    std::u16string GetDeviceSelector() override { return cameraSelector; }

    DeviceWatcher CreateWatcher(const std::u16string& selector) override {
        if (selector != cameraSelector)
            throw Shared::platformError("DeviceInformation.CreateWatcher", Halden::toUtf8(selector),
                                        winrt::result::invalidArgument, "the selector matches no cameras");
        return std::make_shared<Watcher>(_surroundings.pool, _lister, _catalog);
    }

    IAsyncOperation<DeviceInformation> CreateFromIdAsync(const std::u16string& id, const std::vector<std::u16string>&,
                                                         DeviceInformationKind kind) override {
        return Shared::runAsync<DeviceInformation>(_surroundings.pool, [catalog = _catalog, id, kind] {
            for (const CameraGroupHandle& group : catalog->groups())
                if (auto device = deviceWithin(*group, id, kind))
                    return device;
            throw notFound("DeviceInformation.CreateFromIdAsync", id);
        });
    }

    IAsyncOperation<MediaFrameSourceGroup> FromIdAsync(const std::u16string& id) override {
        return Shared::runAsync<MediaFrameSourceGroup>(_surroundings.pool,
                                                       [catalog = _catalog, id]() -> MediaFrameSourceGroup {
                                                           for (const CameraGroupHandle& group : catalog->groups()) {
                                                               if (group->id != id)
                                                                   continue;
                                                               if (group->error)
                                                                   throw winrt::hresult_error(*group->error);
                                                               return std::make_shared<SourceGroup>(group);
                                                           }
                                                           throw notFound("MediaFrameSourceGroup.FromIdAsync", id);
                                                       });
    }

    IAsyncOperation<VectorView<MediaFrameSourceGroup>> FindAllAsync() override {
        return Shared::runAsync<VectorView<MediaFrameSourceGroup>>(_surroundings.pool, [catalog = _catalog] {
            std::vector<MediaFrameSourceGroup> groups;
            for (const CameraGroupHandle& group : catalog->groups())
                if (!group->error)
                    groups.push_back(std::make_shared<SourceGroup>(group));
            return VectorView<MediaFrameSourceGroup>(std::move(groups));
        });
    }

    MediaCapture CreateMediaCapture() override { return std::make_shared<Capture>(_surroundings); }

private:
    const CaptureSurroundings _surroundings;
    const std::shared_ptr<DeviceLister> _lister;
    const std::shared_ptr<DeviceCatalog> _catalog;
};

} // namespace

std::shared_ptr<CameraPlatform> createV4l2Platform() {
    return createV4l2Platform(linuxSystemCalls(), udevDeviceLister());
}

std::shared_ptr<CameraPlatform> createV4l2Platform(std::shared_ptr<SystemCalls> calls,
                                                   std::shared_ptr<DeviceLister> lister, const CameraLimits& limits) {
    return std::make_shared<V4l2Platform>(
        CaptureSurroundings{std::move(calls), std::make_shared<Shared::WorkerPool>(), limits}, std::move(lister));
}

} // namespace Platform::V4l2
