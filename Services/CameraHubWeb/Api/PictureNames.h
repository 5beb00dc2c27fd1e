#pragma once

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

} // namespace CameraHubWeb
