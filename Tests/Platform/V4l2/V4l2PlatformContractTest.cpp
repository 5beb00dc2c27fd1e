#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

namespace {

using namespace Platform::V4l2;

/// The V4L2 platform on the fake driver, whose camera delivers frames all the time.
class FakeCamera final : public PlatformUnderTest {
public:
    explicit FakeCamera(const FakeDevice& device) {
        _driver->plug(Path, device);
        _lister->add(usbNode(0));
        _clock = std::make_unique<FrameClock>(*_driver, Path);
    }

    std::shared_ptr<Platform::CameraPlatform> platform() override {
        return _platform = createV4l2Platform(_driver, _lister);
    }
    bool unplug() override {
        _driver->unplug(Path);
        _lister->remove(usbNode(0).systemPath);
        return comesTrue([&] { return Platform::blockingWait(_platform->FindAllAsync()).Size() == 0; });
    }

private:
    static constexpr const char* Path = "/dev/video0";

    const std::shared_ptr<FakeDriver> _driver = std::make_shared<FakeDriver>();
    const std::shared_ptr<FakeLister> _lister = std::make_shared<FakeLister>();
    std::unique_ptr<FrameClock> _clock;
    std::shared_ptr<Platform::CameraPlatform> _platform;
};

FakeDevice multiPlanarCamera() {
    FakeDevice device = usbCamera();
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.formats = {{V4L2_PIX_FMT_NV12M, {{16, 8, {{1, 30}}}}}};
    return device;
}

INSTANTIATE_TEST_SUITE_P(
    V4l2, PlatformContract,
    testing::Values(PlatformUnderTestCase{"SinglePlanar", [] { return std::make_unique<FakeCamera>(usbCamera()); }},
                    PlatformUnderTestCase{"MultiPlanar",
                                          [] { return std::make_unique<FakeCamera>(multiPlanarCamera()); }}),
    [](const auto& tested) { return tested.param.name; });

} // namespace
