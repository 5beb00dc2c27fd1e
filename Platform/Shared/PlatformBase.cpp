#include "Platform/Shared/PlatformBase.h"

#include "Platform/Imaging/BitmapCodecs.h"
#include "Platform/Shared/LocalStorage.h"

#include <chrono>

namespace Platform::Shared {

PlatformBase::~PlatformBase() {
    // Long enough for what a handler does in the ordinary way, short enough for one that hangs.
    _pool->windDown(std::chrono::seconds(2));
}

IAsyncOperation<BitmapDecoder> PlatformBase::CreateBitmapDecoderAsync(const RandomAccessStream& stream) {
    return Imaging::createBitmapDecoderAsync(stream);
}

IAsyncOperation<BitmapEncoder> PlatformBase::CreateBitmapEncoderAsync(const Guid& encoderId,
                                                                      const RandomAccessStream& stream) {
    return Imaging::createBitmapEncoderAsync(encoderId, stream);
}

SoftwareBitmap PlatformBase::ConvertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format) {
    return Imaging::convertSoftwareBitmap(bitmap, format);
}

IAsyncOperation<StorageFile> PlatformBase::GetFileFromPathAsync(const std::u16string& path) {
    return getFileFromPathAsync(_pool, path);
}

} // namespace Platform::Shared
