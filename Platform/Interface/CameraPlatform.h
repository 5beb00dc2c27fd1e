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
#include <utility>
#include <vector>

namespace Platform {

/// What the camera interfaces offer as static operations: the entry into a platform. Any thread.
///
/// What holds for all members of all interfaces: every failure is a winrt::hresult_error, also where the system has no
/// thread left, or no memory for a still; nothing else is raised but std::bad_alloc, where the program's own memory
/// runs out otherwise. An asynchronous member may raise its errors itself or end its operation with them, unless it
/// says which: callers treat both alike. Operations end, and run their handlers, on any thread. An object that was
/// handed out keeps alive what it needs, and serves on when the platform has been released.
///
/// Releasing the last handle cuts short the delays of operations under way, and waits a moment for handlers that run.
class CameraPlatform {
public:
    virtual ~CameraPlatform() = default;

    /// MediaFrameSourceGroup::GetDeviceSelector: the text that matches camera source groups, for CreateWatcher alone.
    virtual std::u16string GetDeviceSelector() = 0;

    /// DeviceInformation::CreateWatcher: a watcher that has not been started; never null. Raises invalidArgument for
    /// another selector than that of GetDeviceSelector.
    virtual DeviceWatcher CreateWatcher(const std::u16string& selector) = 0;

    /// DeviceInformation::CreateFromIdAsync: the device, device node or container of that id, with at least those of
    /// the named properties that the platform has; never null. Ids of containers are compared without regard to case.
    /// Fails with notFound where nothing of that kind has the id.
    virtual IAsyncOperation<DeviceInformation>
    CreateFromIdAsync(const std::u16string& id, const std::vector<std::u16string>& additionalProperties,
                      DeviceInformationKind kind) = 0;

    /// MediaFrameSourceGroup::FromIdAsync: the group of a device that the watcher reported, as it is now; never null.
    /// Fails with notFound where there is none, and with why a camera that is there cannot be looked at: accessDenied,
    /// busy or timeout.
    virtual IAsyncOperation<MediaFrameSourceGroup> FromIdAsync(const std::u16string& id) = 0;

    /// MediaFrameSourceGroup::FindAllAsync: all groups of the machine, in the platform's order, which stays the same
    /// from call to call; empty without cameras. Those that FromIdAsync fails for are left out; none is null.
    virtual IAsyncOperation<VectorView<MediaFrameSourceGroup>> FindAllAsync() = 0;

    /// A new capture, of no camera yet; never null. Raises nothing.
    virtual MediaCapture CreateMediaCapture() = 0;

    /// BitmapDecoder::CreateAsync: recognises PNG and JPEG. Reads the whole stream, from its beginning, wherever its
    /// position is. Fails with invalidArgument for a null stream, with fail for bytes whose head is no picture's.
    virtual IAsyncOperation<BitmapDecoder> CreateBitmapDecoderAsync(const RandomAccessStream& stream) = 0;

    /// BitmapEncoder::CreateAsync: PngEncoderId is the one encoder that there is; writes at the stream's position.
    /// Fails with invalidArgument for another id and for a null stream.
    virtual IAsyncOperation<BitmapEncoder> CreateBitmapEncoderAsync(const Guid& encoderId,
                                                                    const RandomAccessStream& stream) = 0;

    /// SoftwareBitmap::Convert: the same picture in another order of samples, the same object where the order stays.
    /// Raises invalidArgument for a null bitmap, one whose pixels do not fill it, and formats but Rgba8 and Bgra8.
    virtual SoftwareBitmap ConvertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format) = 0;

    /// StorageFile::GetFileFromPathAsync: the file of that absolute path. Fails with invalidArgument for a relative
    /// path, notFound where nothing is, fail for a folder.
    virtual IAsyncOperation<StorageFile> GetFileFromPathAsync(const std::u16string& path) = 0;
};

/// Makes a platform, or raises winrt::hresult_error.
using CameraPlatformFactory = std::function<std::shared_ptr<CameraPlatform>()>;

/// The process's one platform, made by the factory when it is first asked for; whoever asks meanwhile waits. Any
/// thread. Raises fail where no factory has been named, and what the factory raises; the next call then tries again.
std::shared_ptr<CameraPlatform> cameraPlatform();

/// Names the factory and forgets the platform that an earlier one made; who holds that keeps it. Null forgets the
/// factory too. Called by main once, and by each test. Main thread.
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
