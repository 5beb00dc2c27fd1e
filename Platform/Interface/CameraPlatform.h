#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/BitmapCodec.h"
#include "Platform/Interface/Collections.h"
#include "Platform/Interface/DeviceInformation.h"
#include "Platform/Interface/DeviceWatcher.h"
#include "Platform/Interface/MediaCapture.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/Interface/Storage.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Platform {

/// What the camera interfaces offer as static operations: the entry into a platform. Any thread.
/// Asynchronous operations end on threads of the platform; every failure is a winrt::hresult_error.
class CameraPlatform {
public:
    virtual ~CameraPlatform() = default;

    /// MediaFrameSourceGroup::GetDeviceSelector: the text that matches camera source groups.
    virtual std::u16string GetDeviceSelector() = 0;

    /// DeviceInformation::CreateWatcher.
    virtual DeviceWatcher CreateWatcher(const std::u16string& selector) = 0;

    /// DeviceInformation::CreateFromIdAsync: the device, device node or container of that id, with at
    /// least those of the named properties that the platform has.
    virtual IAsyncOperation<DeviceInformation>
    CreateFromIdAsync(const std::u16string& id, const std::vector<std::u16string>& additionalProperties,
                      DeviceInformationKind kind) = 0;

    /// MediaFrameSourceGroup::FromIdAsync: the group of a device that the watcher reported. Fails where
    /// there is none.
    virtual IAsyncOperation<MediaFrameSourceGroup> FromIdAsync(const std::u16string& id) = 0;

    /// MediaFrameSourceGroup::FindAllAsync: all groups of the machine, in the platform's order.
    virtual IAsyncOperation<VectorView<MediaFrameSourceGroup>> FindAllAsync() = 0;

    /// A capture that has not been initialised.
    virtual MediaCapture CreateMediaCapture() = 0;

    /// BitmapDecoder::CreateAsync: recognises PNG and JPEG, from the stream's beginning.
    virtual IAsyncOperation<BitmapDecoder> CreateBitmapDecoderAsync(const RandomAccessStream& stream) = 0;

    /// BitmapEncoder::CreateAsync: PngEncoderId is the one encoder that there is.
    virtual IAsyncOperation<BitmapEncoder> CreateBitmapEncoderAsync(const Guid& encoderId,
                                                                    const RandomAccessStream& stream) = 0;

    /// SoftwareBitmap::Convert: raises for a null bitmap.
    virtual SoftwareBitmap ConvertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format) = 0;

    /// StorageFile::GetFileFromPathAsync.
    virtual IAsyncOperation<StorageFile> GetFileFromPathAsync(const std::u16string& path) = 0;
};

using CameraPlatformFactory = std::function<std::shared_ptr<CameraPlatform>()>;

/// The process's one platform, made by the factory when it is first asked for. Any thread. Raises what
/// the factory raises; the next call then tries again.
std::shared_ptr<CameraPlatform> cameraPlatform();

/// Names the factory and forgets the platform that an earlier one made. Called by main once, and by
/// each test.
void setCameraPlatformFactory(CameraPlatformFactory factory);

namespace Detail {

struct CameraPlatformHolder {
    std::mutex mutex;
    CameraPlatformFactory factory;
    std::shared_ptr<CameraPlatform> platform;
};

inline CameraPlatformHolder& cameraPlatformHolder() {
    static CameraPlatformHolder holder;
    return holder;
}

} // namespace Detail

inline std::shared_ptr<CameraPlatform> cameraPlatform() {
    auto& holder = Detail::cameraPlatformHolder();
    std::lock_guard lock(holder.mutex);
    if (!holder.platform) {
        if (!holder.factory)
            throw winrt::hresult_error(winrt::result::fail, u"No camera platform has been chosen.");
        holder.platform = holder.factory();
    }
    return holder.platform;
}

inline void setCameraPlatformFactory(CameraPlatformFactory factory) {
    auto& holder = Detail::cameraPlatformHolder();
    std::shared_ptr<CameraPlatform> old;
    std::lock_guard lock(holder.mutex);
    holder.factory = std::move(factory);
    old = std::exchange(holder.platform, nullptr);
}

} // namespace Platform
