#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/LarkspurWindowsCameraHub/FoundCamera.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <string>
#include <vector>

/// A camera held open, its stream running from construction to destruction so that its automatic controls
/// have something to converge on. No frame is read from the stream; stills go another way.
/// One thread at a time.
class ConnectedCamera {
public:
    /// Opens the camera and starts its stream. Raises the platform's errors.
    explicit ConnectedCamera(FoundCamera camera);

    /// Stops the stream and closes the camera. A platform error here ends the process.
    ~ConnectedCamera();

    ConnectedCamera(const ConnectedCamera&) = delete;
    ConnectedCamera& operator=(const ConnectedCamera&) = delete;

    /// One still as the bytes of a PNG file; empty where the platform ended the capture with an error.
    /// Raises hresult_changed_state after 10 s without an end, and the platform's other errors.
    std::vector<unsigned char> capturePhotoAsRawPNG();

    /// Lets the chosen automatics settle for a fixed 2 s and switches them off; those not chosen are
    /// switched off at once. Without any chosen it does nothing. Raises the platform's errors.
    void enableAndConvergeAuto(bool exposure, bool focus, bool wb);

    /// Each sets the exposure, waits for `delay`, and returns what the camera then reports, or exposureUnset
    /// where it could not be set or read. A value that has not changed since the last one is not set again.
    /// Raise the platform's errors.
    std::chrono::microseconds setExposure(std::chrono::microseconds exposure, std::chrono::milliseconds delay);
    std::chrono::microseconds setExposureAsPercent(double percent, std::chrono::milliseconds delay);
    /// In log2 of seconds.
    std::chrono::microseconds setExposureAsExponent(double exponent, std::chrono::milliseconds delay);

    /// ", camera name: " and the name, as log lines end.
    std::string cameraNameSuffix() const;

private:
    Platform::MediaCapture mediaCapture;
    std::vector<Platform::MediaFrameReader> frameReaders; // exactly one once constructed
    FoundCamera foundCamera;

    /// The exponent that the control accepted last; at first one that no control produces, so that the
    /// first request never counts as unchanged.
    std::atomic<double> lastExposure = std::numeric_limits<double>::min();
};

/// The source whose stream the automatics converge on: the first VideoPreview source of the capture, else
/// its first VideoRecord source, else null. Raises the platform's errors.
Platform::MediaFrameSource pickConvergenceSource(const Platform::MediaCapture& capture);

/// Waits for the end of the action, whatever its outcome; false when the time ran out first.
bool waitForCompletion(const Platform::IAsyncAction& action, std::chrono::milliseconds timeout);
