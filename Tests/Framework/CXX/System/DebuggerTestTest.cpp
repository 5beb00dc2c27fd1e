#include "Framework/CXX/System/DebuggerTest.h"

#include "Tests/Support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

TEST(DebuggerTestTest, ATracedProcessHasADebugger) {
    const int result = runInChild([] {
        ASSERT_FALSE(Halden::System::isDebuggerPresent());
        ASSERT_TRUE(letParentTrace());
        EXPECT_TRUE(Halden::System::isDebuggerPresent());
    });
    EXPECT_EQ(result, 0);
}

} // namespace
