#include "Framework/CXX/System/ExecutablePath.h"

#include <gtest/gtest.h>

namespace {

TEST(ExecutablePathTest, IsThisTestProgram) {
    const std::filesystem::path path = Halden::System::executablePath();
    EXPECT_TRUE(path.is_absolute());
    EXPECT_EQ(path.filename(), "FrameworkSystemTests");
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
}

} // namespace
