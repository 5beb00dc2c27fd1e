#pragma once

#include "Platform/Interface/MediaCapture.h"

#include <cstdint>
#include <functional>

/// A source of frames and its group; both null for no source.
struct CameraSource {
    Platform::MediaFrameSourceGroup group;
    Platform::MediaFrameSourceInfo source;
};

// The rules that hold for every way of finding and opening a camera. All block without limit and raise
// the platform's errors.

/// Whether a source counts as a camera: in colour, for pictures or for video.
bool isColourVideo(const Platform::IMediaFrameSourceInfo& source);

/// The position of the largest picture, among those the highest frame rate, among those the last; -1 where
/// there is none. A profile has to exceed the frame rate to count as an improvement.
std::int32_t bestVideoProfile(const Platform::VectorView<Platform::MediaCaptureVideoProfileMediaDescription>& profiles,
                              double minimumFrameRate);

/// What the source is described with. Raises noInterface for a source that describes no profiles.
Platform::VectorView<Platform::MediaCaptureVideoProfileMediaDescription>
videoProfilesOf(const Platform::MediaFrameSourceInfo& source);

/// The first source of a wanted device, in the platform's order.
CameraSource findCameraSource(const std::function<bool(const Platform::IDeviceInformation&)>& isWanted);

using ProfileChoice = std::function<std::int32_t(const Platform::MediaFrameSourceInfo&)>;

/// Initialises the capture for video from that source and sets the format at that position. A position
/// that is negative or past the end is replaced by what `pickProfile` gives for the source.
void openCameraSource(const Platform::MediaCapture& capture, const CameraSource& camera, std::int32_t profileIndex,
                      const ProfileChoice& pickProfile);
