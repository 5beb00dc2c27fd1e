#pragma once

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Tests/Support/ScenarioFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A scenario with the group "G" of one colour preview source "S", 32x24, of the device "D", and a journal.
/// `camera` is the device's object under "cameras"; `more` are further members of the top.
inline std::string cameraScenario(const std::string& camera = "{}", const std::string& more = {}) {
    return R"({"groups": [{"id": "G", "displayName": "Group", "sources": [{"id": "S",
        "device": {"id": "D", "name": "Cam"}, "profiles": [{"width": 32, "height": 24}]}]}],
        "cameras": {"D": )" +
           camera + R"(}, "journal": "journal.txt")" + (more.empty() ? "" : ", " + more) + "}";
}

/// The same without the group: the camera is unplugged.
inline std::string unpluggedScenario(const std::string& camera = "{}") {
    return R"({"groups": [], "cameras": {"D": )" + camera + R"(}, "journal": "journal.txt"})";
}

/// What an operation came to.
struct Outcome {
    bool raised = false;
    winrt::hresult code = winrt::result::ok;
    std::u16string message;
};

template <typename Operation> Outcome outcomeOf(const Operation& operation) {
    try {
        operation();
    } catch (const winrt::hresult_error& error) {
        return {true, error.code(), error.message()};
    }
    return {};
}

/// Tests on a simulated platform of their own.
class SimulatedFixture : public testing::Test {
protected:
    void start(const std::string& scenario) {
        file.write(scenario);
        platform = Platform::Simulated::createSimulatedPlatform(file.path());
    }

    Platform::MediaFrameSourceGroup group(std::uint32_t index = 0) {
        return Platform::blockingWait(platform->FindAllAsync()).GetAt(index);
    }

    std::size_t groupCount() { return Platform::blockingWait(platform->FindAllAsync()).Size(); }

    Platform::MediaCapture open(Platform::PhotoCaptureSource source = Platform::PhotoCaptureSource::VideoPreview) {
        const Platform::MediaCapture capture = platform->CreateMediaCapture();
        Platform::blockingWait(capture->InitializeAsync({group(), source, Platform::StreamingCaptureMode::Video}));
        return capture;
    }

    static Platform::IAsyncAction takeStill(const Platform::MediaCapture& capture,
                                            const Platform::RandomAccessStream& stream) {
        return capture->CapturePhotoToStreamAsync(Platform::ImageEncodingProperties::CreatePng(), stream);
    }

    static std::vector<std::uint8_t> bytesOf(const Platform::RandomAccessStream& stream) {
        std::vector<std::uint8_t> bytes(stream->Size());
        stream->Seek(0);
        stream->Read(bytes);
        return bytes;
    }

    static Platform::Imaging::RgbImage still(const Platform::MediaCapture& capture) {
        const auto stream = std::make_shared<Platform::InMemoryRandomAccessStream>();
        Platform::blockingWait(takeStill(capture, stream));
        return Platform::Imaging::decodeImage(bytesOf(stream));
    }

    ScenarioFile file;
    JournalReader journal{file.journal()};
    std::shared_ptr<Platform::CameraPlatform> platform;
};
