#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace {

using namespace Platform::V4l2;

/// The V4L2 platform on the fake driver, whose camera delivers frames all the time.
class FakeCamera final : public PlatformUnderTest {
public:
    explicit FakeCamera(FakeDevice device) : _device(std::move(device)) {
        _driver->plug(cameraPath, _device);
        _lister->add(usbNode(0));
        _clock = std::make_unique<FrameClock>(*_driver, cameraPath);
    }

    std::shared_ptr<Platform::CameraPlatform> platform() override {
        const auto platform = createV4l2Platform(_driver, _lister);
        _platform = platform;
        return platform;
    }
    bool unplug() override {
        _driver->unplug(cameraPath);
        _lister->remove(usbNode(0).systemPath);
        return waitUntil([&] { return cameras() == 0; });
    }
    void plugIn() override {
        _driver->plug(cameraPath, _device);
        _lister->add(usbNode(0));
        ASSERT_TRUE(waitUntil([&] { return cameras() == 1; }));
    }
    bool holdStills() override {
        _clock.reset();
        return true;
    }

private:
    static constexpr const char* cameraPath = "/dev/video0";

    std::uint32_t cameras() const { return Platform::blockingWait(_platform.lock()->FindAllAsync()).Size(); }

    const FakeDevice _device;
    const std::shared_ptr<FakeDriver> _driver = std::make_shared<FakeDriver>();
    const std::shared_ptr<FakeLister> _lister = std::make_shared<FakeLister>();
    std::unique_ptr<FrameClock> _clock;
    std::weak_ptr<Platform::CameraPlatform> _platform;
};

/// Its MJPEG is left out: the fake driver has no pictures for it.
FakeDevice plainCamera() {
    FakeDevice device = usbCamera();
    device.formats.resize(1);
    return device;
}

FakeDevice multiPlanarCamera() {
    FakeDevice device = usbCamera();
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.formats = {{V4L2_PIX_FMT_NV12M, {{16, 8, {{1, 30}}}}}};
    return device;
}

/// None of the older controls.
FakeDevice cameraWithIsoSpeed() {
    FakeDevice device = plainCamera();
    device.controls.clear();
    device.controls[V4L2_CID_ISO_SENSITIVITY] = {
        V4L2_CTRL_TYPE_INTEGER_MENU, 0, 2, 1, 0, 0, {{0, 100'000}, {1, 200'000}, {2, 800'000}}};
    device.controls[V4L2_CID_ISO_SENSITIVITY_AUTO] = {V4L2_CTRL_TYPE_MENU, 0, 1, 1, 1, 0, {{0, 0}, {1, 0}}};
    return device;
}

INSTANTIATE_TEST_SUITE_P(
    V4l2, PlatformContract,
    testing::Values(
        PlatformUnderTestCase{"SinglePlanar", [] { return std::make_unique<FakeCamera>(plainCamera()); }},
        PlatformUnderTestCase{"MultiPlanar", [] { return std::make_unique<FakeCamera>(multiPlanarCamera()); }},
        PlatformUnderTestCase{"IsoSpeed", [] { return std::make_unique<FakeCamera>(cameraWithIsoSpeed()); }}),
    [](const auto& tested) { return tested.param.name; });

} // namespace
