#pragma once

#include <string>

namespace CameraHubWeb {

/// PEM files.
struct TlsFiles {
    std::string certificate;
    std::string key;
};

} // namespace CameraHubWeb
