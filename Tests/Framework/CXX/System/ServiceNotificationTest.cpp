#include "Framework/CXX/System/ServiceNotification.h"

#include "Tests/Support/NotifySocket.h"

#include <chrono>

namespace {

using namespace std::chrono_literals;
using Halden::System::notifyAlive;
using Halden::System::notifyReady;
using Halden::System::watchdogTime;
using Messages = std::vector<std::string>;

TEST(ServiceNotificationTest, TheManagerHearsEachMessageByItself) {
    const NotifySocket manager;
    notifyReady();
    notifyAlive();
    notifyAlive();
    EXPECT_EQ(manager.received(), (Messages{"READY=1", "WATCHDOG=1", "WATCHDOG=1"}));
}

TEST(ServiceNotificationTest, TheTimeOfTheWatchdogIsTheManagers) {
    const NotifySocket manager("2500000");
    EXPECT_EQ(watchdogTime(), 2500ms);
    EXPECT_EQ(watchdogTime(), 2500ms) << "not only once";
}

TEST(ServiceNotificationTest, WithoutAWatchdogThereIsNoTime) {
    const NotifySocket manager;
    EXPECT_EQ(watchdogTime(), 0us);
}

TEST(ServiceNotificationTest, ATimeThatMakesNoSenseIsNone) {
    for (const char* const text : {"", "0", "soon", "-5"}) {
        const NotifySocket manager(text);
        EXPECT_EQ(watchdogTime(), 0us) << text;
    }
}

TEST(ServiceNotificationTest, TheWatchdogOfAnotherProcessIsNotOurs) {
    const NotifySocket manager("2500000");
    const ScopedEnvironment other("WATCHDOG_PID", "1");
    EXPECT_EQ(watchdogTime(), 0us);
}

TEST(ServiceNotificationTest, WithoutASocketNothingHappens) {
    const NotifySocket manager("2500000");
    for (const std::optional<std::string>& none : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const ScopedEnvironment variable("NOTIFY_SOCKET", none);
        notifyReady();
        notifyAlive();
        EXPECT_EQ(watchdogTime(), 0us);
    }
    EXPECT_EQ(manager.received(), Messages{});
}

TEST(ServiceNotificationTest, AManagerThatIsGoneIsNoError) {
    const TemporaryFolder folder;
    const ScopedEnvironment variable("NOTIFY_SOCKET", (folder.path() / "gone").string());
    EXPECT_NO_THROW(notifyReady());
    EXPECT_NO_THROW(notifyAlive());
}

} // namespace
