#pragma once

#include "Platform/Interface/CameraPlatform.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A capture of which nothing is asked.
class UntouchedCapture : public Platform::IMediaCapture {
public:
    MOCK_METHOD(Platform::IAsyncAction, InitializeAsync, (const Platform::MediaCaptureInitializationSettings&),
                (override));
    MOCK_METHOD(Platform::MapView<Platform::MediaFrameSource>, FrameSources, (), (const, override));
    MOCK_METHOD(Platform::VideoDeviceController, VideoDeviceController, (), (const, override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::MediaFrameReader>, CreateFrameReaderAsync,
                (const Platform::MediaFrameSource&), (override));
    MOCK_METHOD(Platform::IAsyncAction, CapturePhotoToStreamAsync,
                (const Platform::ImageEncodingProperties&, const Platform::RandomAccessStream&), (override));
    MOCK_METHOD(Platform::CameraStreamState, CameraStreamState, (), (const, override));
    MOCK_METHOD(void, Close, (), (override));
};

/// A platform without cameras, whose captures, of any id, are what it is given.
class BarrenPlatform : public Platform::CameraPlatform {
public:
    using CaptureMaker = std::function<Platform::MediaCapture()>;
    explicit BarrenPlatform(CaptureMaker makeCapture) : _makeCapture(std::move(makeCapture)) {}

    MOCK_METHOD(std::u16string, GetDeviceSelector, (), (override));
    MOCK_METHOD(Platform::DeviceWatcher, CreateWatcher, (const std::u16string&), (override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::DeviceInformation>, CreateFromIdAsync,
                (const std::u16string&, const std::vector<std::u16string>&, Platform::DeviceInformationKind),
                (override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::MediaFrameSourceGroup>, FromIdAsync, (const std::u16string&),
                (override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::BitmapDecoder>, CreateBitmapDecoderAsync,
                (const Platform::RandomAccessStream&), (override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::BitmapEncoder>, CreateBitmapEncoderAsync,
                (const Platform::Guid&, const Platform::RandomAccessStream&), (override));
    MOCK_METHOD(Platform::SoftwareBitmap, ConvertSoftwareBitmap,
                (const Platform::SoftwareBitmap&, Platform::BitmapPixelFormat), (override));
    MOCK_METHOD(Platform::IAsyncOperation<Platform::StorageFile>, GetFileFromPathAsync, (const std::u16string&),
                (override));

    Platform::IAsyncOperation<Platform::VectorView<Platform::MediaFrameSourceGroup>> FindAllAsync() override {
        Platform::AsyncOperationSource<Platform::VectorView<Platform::MediaFrameSourceGroup>> source;
        source.complete();
        return source.operation();
    }
    Platform::MediaCapture CreateMediaCapture() override { return _makeCapture(); }

private:
    const CaptureMaker _makeCapture;
};
