#include "Framework/CXX/System/DataFolders.h"

#include "Framework/CXX/System/EnvironmentVariable.h"

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace Halden::System {

namespace {

std::string homeFolderOfUserDatabase() {
    constexpr std::size_t textBytes = 16384; // ample for one entry; a longer one counts as none
    std::vector<char> text(textBytes);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, text.data(), text.size(), &found) != 0 || found == nullptr)
        return {};
    return found->pw_dir;
}

std::string defaultLocalDataFolder() {
    std::string home = environmentVariableOr("HOME", "");
    if (home.empty())
        home = homeFolderOfUserDatabase();
    return home.empty() ? home : home + "/.local/share";
}

} // namespace

std::string commonDataFolder() { return environmentVariableOr("CAMERA_HUB_COMMON_DATA", "/var/lib"); }

std::string localDataFolder() {
    const std::string perUser = environmentVariableOr("XDG_DATA_HOME", defaultLocalDataFolder());
    return environmentVariableOr("CAMERA_HUB_LOCAL_DATA", perUser);
}

} // namespace Halden::System
