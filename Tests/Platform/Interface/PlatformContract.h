#pragma once

#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A platform with one camera to be tested: its first group has the camera's sources, the first of them one for
/// video preview, and stills succeed. It holds the platform weakly, so that a test can release it.
class PlatformUnderTest {
public:
    virtual ~PlatformUnderTest() = default;

    virtual std::shared_ptr<Platform::CameraPlatform> platform() = 0;

    /// Takes the camera away; returns when the platform knows. False where that is not possible.
    virtual bool unplug() = 0;

    /// Brings it back; returns when the platform knows. Called after `unplug` alone.
    virtual void plugIn() = 0;

    /// Stills that are asked for from now on do not end by themselves within heldFor. False where that is not possible.
    virtual bool holdStills() = 0;
};

/// Long enough for what a test does meanwhile, short enough to be waited for.
constexpr std::chrono::milliseconds heldFor{1000};

struct PlatformUnderTestCase {
    std::string name;
    std::function<std::unique_ptr<PlatformUnderTest>()> make;
};

/// A call that depends on the state of a capture.
struct CaptureUse {
    std::string operation; // as errors name it
    std::function<void()> call;
};

/// What every platform must do alike, a test for each promise that Platform/Interface makes and that any platform can
/// try. A platform's test program links the suite and names its cases with INSTANTIATE_TEST_SUITE_P.
class PlatformContract : public testing::TestWithParam<PlatformUnderTestCase> {
protected:
    void SetUp() override;

    Platform::MediaCapture open();
    Platform::MediaFrameSource firstSource(const Platform::MediaCapture& capture);
    Platform::MediaFrameReader createReader(const Platform::MediaCapture& capture);
    Platform::MediaFrameReader startReader(const Platform::MediaCapture& capture);
    Platform::IAsyncAction takeStill(const Platform::MediaCapture& capture, const Platform::RandomAccessStream& stream);
    static Platform::RandomAccessStream newStream();

    /// All uses of a capture but InitializeAsync and Close.
    std::vector<CaptureUse> usesOf(const Platform::MediaCapture& capture, const Platform::MediaFrameSource& source);
    static std::vector<CaptureUse> usesOf(const Platform::MediaFrameSource& source,
                                          const Platform::MediaFrameFormat& format);
    static std::vector<CaptureUse> usesOf(const Platform::VideoDeviceController& controller);
    /// All uses of a reader but StopAsync.
    static std::vector<CaptureUse> usesOf(const Platform::MediaFrameReader& reader);

    /// Each raises that code, with a text "OPERATION on DEVICE: reason"; an asynchronous one at once or as it ends.
    static void expectRefused(const std::vector<CaptureUse>& uses, winrt::hresult code, const std::string& reason);
    /// Each raises notFound, whatever the text.
    static void expectGone(const std::vector<CaptureUse>& uses);

    std::unique_ptr<PlatformUnderTest> _subject;
    std::shared_ptr<Platform::CameraPlatform> _platform;
    Platform::MediaCaptureInitializationSettings _settings;
};

/// The code that a call raises; ok if it raises nothing.
winrt::hresult codeRaisedBy(const std::function<void()>& call);

/// Whether the operation ends within ten seconds.
bool ends(const Platform::IAsyncAction& action);

/// Width and height in the header of a PNG at the stream's beginning; 0 and 0 where there is none.
std::pair<std::uint32_t, std::uint32_t> pngSize(const Platform::RandomAccessStream& stream);
bool isPng(const Platform::RandomAccessStream& stream);
