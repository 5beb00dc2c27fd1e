#pragma once

#include <string>

namespace Halden::System {

/// The folder for the data of all users: $CAMERA_HUB_COMMON_DATA, else /var/lib. Not tested for existence.
std::string commonDataFolder();

/// The folder for the data of this user: $CAMERA_HUB_LOCAL_DATA, else $XDG_DATA_HOME, else .local/share in
/// the home folder. Not tested for existence; empty for a user without a home.
std::string localDataFolder();

} // namespace Halden::System
