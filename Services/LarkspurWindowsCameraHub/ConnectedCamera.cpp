#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"

#include "Framework/CXX/Common/Clock.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/DataReader.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"
#include "Services/CameraAccess/Convergence.h"
#include "Services/LarkspurWindowsCameraHub/AutoControls.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

using Platform::blockingWait;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds captureTimeout{10000};

} // namespace

Platform::MediaFrameSource pickConvergenceSource(const Platform::MediaCapture& capture) {
    const auto sources = capture->FrameSources();
    for (const auto wanted : {Platform::MediaStreamType::VideoPreview, Platform::MediaStreamType::VideoRecord})
        for (const auto& [id, source] : sources)
            if (source->Info()->MediaStreamType() == wanted)
                return source;
    return nullptr;
}

bool waitForCompletion(const Platform::IAsyncAction& action, milliseconds timeout) {
    const auto deadline = Halden::currentClock()->deadlineAfter(timeout);
    return Platform::CompletionFlag::of(action)->waitUntil(deadline);
}

ConnectedCamera::ConnectedCamera(FoundCamera camera)
    : mediaCapture(CameraHelper::CreateMediaCapture(camera)), foundCamera(std::move(camera)) {
    const auto source = pickConvergenceSource(mediaCapture);
    frameReaders.push_back(blockingWait(mediaCapture->CreateFrameReaderAsync(source)));
    frameReaders.back()->AcquisitionMode(Platform::MediaFrameReaderAcquisitionMode::Realtime);
    blockingWait(frameReaders.back()->StartAsync());
    LOG4CXX_INFO(deviceLogger(), "Connected to camera uid " << foundCamera.description.uid << cameraNameSuffix());
}

ConnectedCamera::~ConnectedCamera() {
    try {
        blockingWait(frameReaders.back()->StopAsync());
        mediaCapture->Close();
    } catch (...) {
        // Leaving the destructor would end the process too. But a compiler may end a function that must not
        // raise from its clean-up code, where the error is not known any more (GCC before 14 does): the crash
        // record would have no cause.
        std::terminate();
    }
    LOG4CXX_INFO(deviceLogger(), "Disconnected from camera uid " << foundCamera.description.uid << cameraNameSuffix());
}

std::vector<unsigned char> ConnectedCamera::capturePhotoAsRawPNG() {
    const auto stream = std::make_shared<Platform::InMemoryRandomAccessStream>();
    const auto action = mediaCapture->CapturePhotoToStreamAsync(Platform::ImageEncodingProperties::CreatePng(), stream);
    LOG4CXX_DEBUG(deviceLogger(), "waiting... ");
    const bool isCompleted = waitForCompletion(action, captureTimeout);
    LOG4CXX_DEBUG(deviceLogger(), "waiting... done");
    if (!isCompleted)
        throw winrt::hresult_changed_state(u"Timed out waiting for camera capture.");

    // How the action ended is not asked: a capture that the platform ended with an error has left the
    // stream empty, and an empty picture is what its client gets.
    stream->Seek(0);
    Platform::DataReader reader(stream);
    blockingWait(reader.LoadAsync(static_cast<std::uint32_t>(stream->Size())));
    return reader.ReadBytes(stream->Size());
}

void ConnectedCamera::enableAndConvergeAuto(bool exposure, bool focus, bool wb) {
    converge(exposure, focus, wb,
             {.autoExposure = [this](bool on) { autoExposure(mediaCapture, on); },
              .autoFocus = [this](bool on) { autoFocus(mediaCapture, on); },
              .autoWhiteBalance = [this](bool on) { autoWhiteBalance(mediaCapture, on); },
              .tell = [](const std::string& line) { LOG4CXX_DEBUG(deviceLogger(), line); },
              .camera = cameraNameSuffix()});
}

microseconds ConnectedCamera::setExposure(microseconds exposure, milliseconds delay) {
    LOG4CXX_INFO(deviceLogger(), "Requested exposure " << exposure.count() << " us." << cameraNameSuffix());
    const ExposureRange range = getExposureRange(mediaCapture);
    if (range.step == 0) {
        LOG4CXX_ERROR(deviceLogger(), "Exposure changes not supported" << cameraNameSuffix());
        return exposureUnset;
    }
    return setExposureAsExponent(range.exponentFromMicroseconds(exposure.count()), delay);
}

microseconds ConnectedCamera::setExposureAsPercent(double percent, milliseconds delay) {
    LOG4CXX_INFO(deviceLogger(), "Requested exposure " << percent << " %." << cameraNameSuffix());
    const ExposureRange range = getExposureRange(mediaCapture);
    if (range.step == 0) {
        LOG4CXX_ERROR(deviceLogger(), "Exposure changes not supported" << cameraNameSuffix());
        return exposureUnset;
    }
    return setExposureAsExponent(range.exponentFromPercent(percent), delay);
}

microseconds ConnectedCamera::setExposureAsExponent(double exponent, milliseconds delay) {
    if (exponent == lastExposure) {
        LOG4CXX_INFO(deviceLogger(), "Exposure has not changed since last request." << cameraNameSuffix());
        return exponentToMicroseconds(exponent);
    }
    // std::to_string prints a double as "%f" does.
    LOG4CXX_INFO(deviceLogger(), "Try set to 2^[" << std::to_string(exponent) << "] s" << cameraNameSuffix());
    if (!mediaCapture->VideoDeviceController()->Exposure()->TrySetValue(exponent)) {
        LOG4CXX_ERROR(deviceLogger(), "Failed to set exposure" << cameraNameSuffix());
        return exposureUnset;
    }
    lastExposure = exponent;

    // The platform's sleep takes an unsigned 32-bit number of milliseconds: -1 sleeps for 49 days.
    Halden::currentClock()->sleepFor(milliseconds(static_cast<std::uint32_t>(delay.count())));

    double value = 0.0;
    if (!mediaCapture->VideoDeviceController()->Exposure()->TryGetValue(value))
        return exposureUnset;
    const microseconds latched = exponentToMicroseconds(value);
    LOG4CXX_INFO(deviceLogger(), "Exposure latched to: " << latched.count() << "us [" << std::to_string(value) << "]"
                                                         << cameraNameSuffix());
    return latched;
}

std::string ConnectedCamera::cameraNameSuffix() const { return ", camera name: " + foundCamera.description.name; }
