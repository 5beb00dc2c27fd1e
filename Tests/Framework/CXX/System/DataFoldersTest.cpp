#include "Framework/CXX/System/DataFolders.h"

#include "Tests/Support/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace {

using Halden::System::commonDataFolder;
using Halden::System::localDataFolder;

TEST(DataFoldersTest, CommonDataIsWhereTheVariableSays) {
    const ScopedEnvironment variable("CAMERA_HUB_COMMON_DATA", "/some/where");
    EXPECT_EQ(commonDataFolder(), "/some/where");
}

TEST(DataFoldersTest, CommonDataIsInVarLibOtherwise) {
    const ScopedEnvironment variable("CAMERA_HUB_COMMON_DATA", std::nullopt);
    EXPECT_EQ(commonDataFolder(), "/var/lib");
}

TEST(DataFoldersTest, AnEmptyVariableCountsAsNotSet) {
    const ScopedEnvironment common("CAMERA_HUB_COMMON_DATA", "");
    const ScopedEnvironment local("CAMERA_HUB_LOCAL_DATA", "");
    const ScopedEnvironment xdg("XDG_DATA_HOME", "/data/home");
    EXPECT_EQ(commonDataFolder(), "/var/lib");
    EXPECT_EQ(localDataFolder(), "/data/home");
}

TEST(DataFoldersTest, LocalDataPrefersItsOwnVariable) {
    const ScopedEnvironment local("CAMERA_HUB_LOCAL_DATA", "/local");
    const ScopedEnvironment xdg("XDG_DATA_HOME", "/data/home");
    EXPECT_EQ(localDataFolder(), "/local");
}

TEST(DataFoldersTest, LocalDataLiesInTheHomeFolderOtherwise) {
    const ScopedEnvironment local("CAMERA_HUB_LOCAL_DATA", std::nullopt);
    const ScopedEnvironment xdg("XDG_DATA_HOME", std::nullopt);
    const ScopedEnvironment home("HOME", "/home/somebody");
    EXPECT_EQ(localDataFolder(), "/home/somebody/.local/share");
}

TEST(DataFoldersTest, TheUserDatabaseKnowsTheHomeFolderWithoutAVariable) {
    const ScopedEnvironment local("CAMERA_HUB_LOCAL_DATA", std::nullopt);
    const ScopedEnvironment xdg("XDG_DATA_HOME", std::nullopt);
    const ScopedEnvironment home("HOME", std::nullopt);
    const std::string folder = localDataFolder();
    EXPECT_TRUE(folder.starts_with("/") && folder.ends_with("/.local/share")) << folder;
}

} // namespace
