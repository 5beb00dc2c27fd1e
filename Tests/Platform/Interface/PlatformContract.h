#pragma once

#include "Platform/Interface/CameraPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A platform with one camera to be tested: its first group has the camera's sources, the first of them one for
/// video preview, and stills succeed.
class PlatformUnderTest {
public:
    virtual ~PlatformUnderTest() = default;

    virtual std::shared_ptr<Platform::CameraPlatform> platform() = 0;

    /// Takes the camera away; returns when the platform knows. False where that is not possible.
    virtual bool unplug() = 0;
};

struct PlatformUnderTestCase {
    std::string name;
    std::function<std::unique_ptr<PlatformUnderTest>()> make;
};

/// A call that depends on the state of a capture.
struct CaptureUse {
    std::string operation; // as errors name it
    std::function<void()> call;
};

/// What every platform must do alike. A platform's test program compiles PlatformContract.cpp and names its
/// cases with INSTANTIATE_TEST_SUITE_P.
class PlatformContract : public testing::TestWithParam<PlatformUnderTestCase> {
protected:
    void SetUp() override;

    Platform::MediaCapture open();
    Platform::MediaFrameSource firstSource(const Platform::MediaCapture& capture);
    Platform::MediaFrameReader startReader(const Platform::MediaCapture& capture);
    Platform::IAsyncAction takeStill(const Platform::MediaCapture& capture, const Platform::RandomAccessStream& stream);
    /// All uses of a capture but InitializeAsync and Close.
    std::vector<CaptureUse> usesOf(const Platform::MediaCapture& capture, const Platform::MediaFrameSource& source);
    /// Each raises that code, with a text "OPERATION on DEVICE: reason"; an asynchronous one at once or as it ends.
    void expectRefused(const std::vector<CaptureUse>& uses, winrt::hresult code, const std::string& reason);
    /// Each raises notFound, whatever the text.
    void expectGone(const std::vector<CaptureUse>& uses);

    std::unique_ptr<PlatformUnderTest> _subject;
    std::shared_ptr<Platform::CameraPlatform> _platform;
    Platform::MediaCaptureInitializationSettings _settings;
};
