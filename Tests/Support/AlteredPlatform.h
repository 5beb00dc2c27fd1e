#pragma once

#include "Platform/Interface/CameraPlatform.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// An operation that has ended with that result.
template <typename T> Platform::IAsyncOperation<T> completedWith(T result) {
    Platform::AsyncOperationSource<T> source;
    source.complete(std::move(result));
    return source.operation();
}

/// Another platform, of which a test replaces single answers, in order to bring about what that one cannot.
class AlteredPlatform final : public Platform::CameraPlatform {
public:
    using Group = Platform::MediaFrameSourceGroup;
    using Groups = Platform::VectorView<Group>;

    explicit AlteredPlatform(std::shared_ptr<Platform::CameraPlatform> original) : _original(std::move(original)) {}

    /// Puts itself in the place of the process's platform.
    static std::shared_ptr<AlteredPlatform> install() {
        auto altered = std::make_shared<AlteredPlatform>(Platform::cameraPlatform());
        Platform::setCameraPlatformFactory([altered] { return altered; });
        return altered;
    }

    // In place of the original's answers; empty: the original's. Set before use.
    std::function<std::u16string()> selector;
    Platform::DeviceWatcher watcher;
    std::function<Platform::DeviceInformation()> node;
    std::function<Group()> group;
    std::function<Groups()> groups;

    std::u16string GetDeviceSelector() override { return selector ? selector() : _original->GetDeviceSelector(); }
    Platform::DeviceWatcher CreateWatcher(const std::u16string& text) override {
        return watcher ? watcher : _original->CreateWatcher(text);
    }
    Platform::IAsyncOperation<Platform::DeviceInformation>
    CreateFromIdAsync(const std::u16string& id, const std::vector<std::u16string>& names,
                      Platform::DeviceInformationKind kind) override {
        return node ? completedWith(node()) : _original->CreateFromIdAsync(id, names, kind);
    }
    Platform::IAsyncOperation<Group> FromIdAsync(const std::u16string& id) override {
        return group ? completedWith(group()) : _original->FromIdAsync(id);
    }
    Platform::IAsyncOperation<Groups> FindAllAsync() override {
        return groups ? completedWith(groups()) : _original->FindAllAsync();
    }
    Platform::MediaCapture CreateMediaCapture() override { return _original->CreateMediaCapture(); }
    Platform::IAsyncOperation<Platform::BitmapDecoder>
    CreateBitmapDecoderAsync(const Platform::RandomAccessStream& stream) override {
        return _original->CreateBitmapDecoderAsync(stream);
    }
    Platform::IAsyncOperation<Platform::BitmapEncoder>
    CreateBitmapEncoderAsync(const Platform::Guid& id, const Platform::RandomAccessStream& stream) override {
        return _original->CreateBitmapEncoderAsync(id, stream);
    }
    Platform::SoftwareBitmap ConvertSoftwareBitmap(const Platform::SoftwareBitmap& bitmap,
                                                   Platform::BitmapPixelFormat format) override {
        return _original->ConvertSoftwareBitmap(bitmap, format);
    }
    Platform::IAsyncOperation<Platform::StorageFile> GetFileFromPathAsync(const std::u16string& path) override {
        return _original->GetFileFromPathAsync(path);
    }

private:
    const std::shared_ptr<Platform::CameraPlatform> _original;
};
