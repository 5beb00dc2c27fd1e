#pragma once

#include "Services/CameraHubWeb/Http/TlsFiles.h"

#include <boost/asio/ssl/context.hpp>

namespace CameraHubWeb {

/// For a server: TLS 1.2 or later. Throws std::runtime_error, its text one line for people.
boost::asio::ssl::context makeTlsContext(const TlsFiles& files);

} // namespace CameraHubWeb
