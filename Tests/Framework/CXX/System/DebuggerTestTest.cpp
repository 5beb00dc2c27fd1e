#include "Framework/CXX/System/DebuggerTest.h"

#include "Tests/Framework/CXX/System/ChildProcess.h"

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
