#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/Guid.h"
#include "Platform/Interface/SoftwareBitmap.h"

#include <memory>

namespace Platform {

/// The decoder of one encoded picture, of which it has read all bytes. One thread at a time.
class IBitmapDecoder {
public:
    virtual ~IBitmapDecoder() = default;

    /// Bgra8, opaque; a new bitmap each time, never null. Fails with fail for bytes that are damaged behind their head,
    /// and with outOfMemory.
    virtual IAsyncOperation<SoftwareBitmap> GetSoftwareBitmapAsync() = 0;
};
using BitmapDecoder = std::shared_ptr<IBitmapDecoder>;

/// Writes one picture into the stream that it was made for. One thread at a time.
class IBitmapEncoder {
public:
    virtual ~IBitmapEncoder() = default;

    /// The picture to be written; the last one counts. Raises invalidArgument for null, for a format other than Rgba8
    /// and Bgra8, and for a bitmap whose pixels do not fill it.
    virtual void SetSoftwareBitmap(const SoftwareBitmap& bitmap) = 0;

    /// Writes the colours, without alpha, at the stream's position. Fails with invalidArgument without a bitmap, and
    /// with the stream's errors.
    virtual IAsyncAction FlushAsync() = 0;
};
using BitmapEncoder = std::shared_ptr<IBitmapEncoder>;

/// Names the PNG encoder.
constexpr Guid PngEncoderId{0x27949969, 0x876A, 0x41D7, {0x94, 0x47, 0x56, 0x8F, 0x6A, 0x35, 0xA4, 0xDC}};

} // namespace Platform
