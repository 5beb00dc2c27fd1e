#include "Platform/Simulated/World/ScenarioWatcher.h"

#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"

#include <sys/syscall.h>

#include <cerrno>
#include <cstdio>

using Platform::Simulated::ScenarioWatcher;

namespace {

/// What the work writes to standard error.
template <typename Work> std::string complaintsOf(const Work& work) {
    testing::internal::CaptureStderr();
    work();
    std::fflush(stderr);
    return testing::internal::GetCapturedStderr();
}

TEST(ScenarioWatcherTest, WithoutAThreadTheCamerasOfTheBeginningStayAndALineSaysSo) {
    const ScenarioFile file("{}");
    const int result = runInChild([&file] {
        ASSERT_TRUE(letThreadStartsFail());
        std::string text;
        EXPECT_EQ(complaintsOf([&] { ScenarioWatcher(file.path(), [&](const std::string& now) { text = now; }); }),
                  "Simulated cameras do not follow their file: pthread_create on " + file.path().native() +
                      ": Resource temporarily unavailable\n");
        EXPECT_EQ(text, "{}");
    });
    EXPECT_EQ(result, 0);
}

TEST(ScenarioWatcherTest, WithoutAWatchTheCamerasOfTheBeginningStayAndALineSaysWhatIsLacking) {
    const ScenarioFile file(cameraScenario());
    const int result = runInChild([&file] {
        ASSERT_TRUE(letSystemCallFail(SYS_inotify_init1, EMFILE));
        std::shared_ptr<Platform::CameraPlatform> platform;
        EXPECT_EQ(complaintsOf([&] { platform = Platform::Simulated::createSimulatedPlatform(file.path()); }),
                  "Simulated cameras do not follow their file: inotify_init1 on " + file.folder().native() +
                      ": Too many open files (fs.inotify.max_user_instances, or the descriptors of the process)\n");
        EXPECT_EQ(Platform::blockingWait(platform->FindAllAsync()).Size(), 1U);
    });
    EXPECT_EQ(result, 0);
}

TEST(ScenarioWatcherTest, WithoutAWatchForTheFolderALineSaysWhatIsLackingToo) {
    const ScenarioFile file("{}");
    const int result = runInChild([&file] {
        ASSERT_TRUE(letSystemCallFail(SYS_inotify_add_watch, ENOSPC));
        EXPECT_EQ(complaintsOf([&] { ScenarioWatcher(file.path(), [](const std::string&) {}); }),
                  "Simulated cameras do not follow their file: inotify_add_watch on " + file.folder().native() +
                      ": No space left on device (fs.inotify.max_user_watches)\n");
    });
    EXPECT_EQ(result, 0);
}

} // namespace
