#pragma once

#include "Services/CameraHubWeb/Api/RequestReading.h"
#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <string>
#include <string_view>

namespace CameraHubWeb {

/// "0123...ef.png": the id and the ending.
struct PictureName {
    std::string_view id;
    /// With its point; empty where there is none.
    std::string_view ending;
};

/// Of the name that it was given, which it refers to.
PictureName splitName(std::string_view name);

/// The name with another ending, which has its point.
std::string withEnding(const std::string& fileName, const char* ending);

/// What tells a still's JPEG file of these options from all others: its entity tag.
std::string tagOf(const KeptStill& still, const PictureOptions& options);

} // namespace CameraHubWeb
