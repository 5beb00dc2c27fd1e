#include "Platform/Interface/CameraPlatform.h"

#include <gtest/gtest.h>

using namespace Platform;

namespace {

/// A platform that can do nothing.
class NoPlatform final : public CameraPlatform {
public:
    std::u16string GetDeviceSelector() override { refuse(); }
    DeviceWatcher CreateWatcher(const std::u16string&) override { refuse(); }
    IAsyncOperation<DeviceInformation> CreateFromIdAsync(const std::u16string&, const std::vector<std::u16string>&,
                                                         DeviceInformationKind) override {
        refuse();
    }
    IAsyncOperation<MediaFrameSourceGroup> FromIdAsync(const std::u16string&) override { refuse(); }
    IAsyncOperation<VectorView<MediaFrameSourceGroup>> FindAllAsync() override { refuse(); }
    MediaCapture CreateMediaCapture() override { refuse(); }
    IAsyncOperation<BitmapDecoder> CreateBitmapDecoderAsync(const RandomAccessStream&) override { refuse(); }
    IAsyncOperation<BitmapEncoder> CreateBitmapEncoderAsync(const Guid&, const RandomAccessStream&) override {
        refuse();
    }
    SoftwareBitmap ConvertSoftwareBitmap(const SoftwareBitmap&, BitmapPixelFormat) override { refuse(); }
    IAsyncOperation<StorageFile> GetFileFromPathAsync(const std::u16string&) override { refuse(); }

private:
    [[noreturn]] static void refuse() { throw winrt::hresult_error(winrt::result::fail, u"refused"); }
};

class CameraPlatformTest : public testing::Test {
protected:
    void TearDown() override { setCameraPlatformFactory(nullptr); }
};

TEST_F(CameraPlatformTest, RaisesWithoutAFactory) {
    setCameraPlatformFactory(nullptr);
    EXPECT_THROW(cameraPlatform(), winrt::hresult_error);
}

TEST_F(CameraPlatformTest, MakesThePlatformOnceAtItsFirstUse) {
    int made = 0;
    setCameraPlatformFactory([&] {
        ++made;
        return std::make_shared<NoPlatform>();
    });
    EXPECT_EQ(made, 0);
    const auto first = cameraPlatform();
    EXPECT_EQ(cameraPlatform(), first);
    EXPECT_EQ(made, 1);
}

TEST_F(CameraPlatformTest, TriesAgainAfterAFactoryThatRaised) {
    int calls = 0;
    setCameraPlatformFactory([&]() -> std::shared_ptr<CameraPlatform> {
        if (++calls == 1)
            throw winrt::hresult_error(winrt::result::fail, u"not yet");
        return std::make_shared<NoPlatform>();
    });
    EXPECT_THROW(cameraPlatform(), winrt::hresult_error);
    EXPECT_NE(cameraPlatform(), nullptr);
}

TEST_F(CameraPlatformTest, ANewFactoryForgetsTheOldPlatform) {
    setCameraPlatformFactory([] { return std::make_shared<NoPlatform>(); });
    const std::weak_ptr<CameraPlatform> first = cameraPlatform();
    setCameraPlatformFactory([] { return std::make_shared<NoPlatform>(); });
    EXPECT_TRUE(first.expired());
    EXPECT_NE(cameraPlatform(), nullptr);
}

} // namespace
