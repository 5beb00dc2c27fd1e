#pragma once

#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Platform/V4l2/V4l2Platform.h"
#include "Tests/Platform/V4l2/FakeKernel/FakeDriver.h"
#include "Tests/Platform/V4l2/FakeKernel/FakeLister.h"
#include "Tests/Support/RaisedError.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace Platform::V4l2 {

/// Has a device deliver frames until it goes out of scope: one each two milliseconds.
class FrameClock {
public:
    FrameClock(FakeDriver& driver, std::string path, FakeFrame frame = {});
    ~FrameClock();
    FrameClock(const FrameClock&) = delete;
    FrameClock& operator=(const FrameClock&) = delete;

private:
    std::atomic<bool> _stopping{false};
    std::thread _thread;
};

/// The platform on the fake driver, with one camera plugged in; limits are short.
class CameraFixture : public testing::Test {
protected:
    static constexpr const char* videoPath = "/dev/video0";

    CameraFixture();
    /// Checks that nothing is left open or mapped.
    ~CameraFixture() override;

    void plug(FakeDevice device);
    MediaFrameSourceGroup group();
    /// An initialised capture of the one camera.
    MediaCapture open();
    MediaFrameSource sourceOf(const MediaCapture& capture);
    void setFormat(const MediaCapture& capture, std::uint32_t index);
    /// A reader that runs.
    MediaFrameReader startReader(const MediaCapture& capture);
    /// The still's PNG, or nothing if it has not come within that time.
    std::optional<std::vector<std::uint8_t>> still(const MediaCapture& capture,
                                                   std::chrono::milliseconds limit = patience);
    /// Delivers the frame to a stream that somebody takes frames of, and waits until it has been taken. False if not.
    bool deliverTaken(const FakeFrame& frame = {});
    /// Brightness of the middle of a still, 0 to 255.
    static int brightness(const std::vector<std::uint8_t>& png);
    bool nothingIsLeft() const { return driver->openDescriptors() == 0 && driver->mappings() == 0; }

    const std::shared_ptr<FakeDriver> driver = std::make_shared<FakeDriver>();
    const std::shared_ptr<FakeLister> lister = std::make_shared<FakeLister>();
    CameraLimits limits{std::chrono::milliseconds(1000), std::chrono::milliseconds(3000), std::chrono::milliseconds(20),
                        std::chrono::milliseconds(1000)};
    std::shared_ptr<CameraPlatform> platform;
};

} // namespace Platform::V4l2
