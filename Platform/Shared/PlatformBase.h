#pragma once

#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>
#include <utility>

namespace Platform::Shared {

/// What does not depend on where cameras come from: bitmaps and files. Its end ends the delays of
/// operations under way and gives running event handlers a moment to end.
class PlatformBase : public CameraPlatform {
public:
    ~PlatformBase() override;

    IAsyncOperation<BitmapDecoder> CreateBitmapDecoderAsync(const RandomAccessStream& stream) override;
    IAsyncOperation<BitmapEncoder> CreateBitmapEncoderAsync(const Guid& encoderId,
                                                            const RandomAccessStream& stream) override;
    SoftwareBitmap ConvertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format) override;
    IAsyncOperation<StorageFile> GetFileFromPathAsync(const std::u16string& path) override;

protected:
    explicit PlatformBase(std::shared_ptr<WorkerPool> pool) : _pool(std::move(pool)) {}

private:
    const std::shared_ptr<WorkerPool> _pool;
};

} // namespace Platform::Shared
