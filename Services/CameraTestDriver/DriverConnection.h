#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Platform/Interface/SoftwareBitmap.h"
#include "Services/CameraTestDriver/DriverCamera.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A camera that the driver holds open. Its maps are keyed by the text of a picture's id.
struct DriverConnection {
    Platform::MediaCapture mediaCapture;
    std::vector<Platform::MediaFrameReader> frameReaders;        ///< always empty: the driver starts no stream
    std::map<std::string, Platform::IAsyncAction> pendingImages; ///< always empty: every capture is waited for
    std::map<std::string, Platform::SoftwareBitmap> images;      ///< every picture taken, the saved ones too
    DriverCamera camera;
    std::int32_t saveCounter = 0;
};
