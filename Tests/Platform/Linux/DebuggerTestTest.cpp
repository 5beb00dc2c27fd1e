#include "Platform/Linux/DebuggerTest.h"

#include "Tests/Platform/Linux/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

TEST(DebuggerTest, ATracedProcessHasADebugger) {
    const int result = runInChild([] {
        ASSERT_FALSE(Platform::Linux::isDebuggerPresent());
        ASSERT_TRUE(letParentTrace());
        EXPECT_TRUE(Platform::Linux::isDebuggerPresent());
    });
    EXPECT_EQ(result, 0);
}

} // namespace
