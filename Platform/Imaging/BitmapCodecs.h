#pragma once

#include "Platform/Interface/BitmapCodec.h"
#include "Platform/Interface/RandomAccessStream.h"
#include "Platform/Interface/SoftwareBitmap.h"

namespace Platform::Imaging {

/// Decodes the PNG or JPEG that the stream holds from its start; the bitmaps are Bgra8, opaque. All operations
/// here have ended when they are returned, and end with the error where there is one. Fails for a head
/// that is no picture's.
IAsyncOperation<BitmapDecoder> createBitmapDecoderAsync(const RandomAccessStream& stream);

/// Writes one picture at the stream's position. Fails for an encoder other than PngEncoderId. Its flush
/// fails without a bitmap, and writes the colours alone, without alpha.
IAsyncOperation<BitmapEncoder> createBitmapEncoderAsync(const Guid& encoderId, const RandomAccessStream& stream);

/// The same picture in another order of samples; the same object where the format stays. Raises
/// winrt::hresult_error for no bitmap, a damaged one, and formats other than Rgba8 and Bgra8.
SoftwareBitmap convertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format);

} // namespace Platform::Imaging
