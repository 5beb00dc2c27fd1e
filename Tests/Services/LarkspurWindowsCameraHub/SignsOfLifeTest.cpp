#include "Services/LarkspurWindowsCameraHub/SignsOfLife.h"

#include "Services/LarkspurWindowsCameraHub/Listeners.h"
#include "Tests/Framework/CXX/Network/TestApplication.h"
#include "Tests/Support/NotifySocket.h"
#include "Tests/Support/SimulatedHub.h"
#include "Tests/Support/WaitUntil.h"

#include <QCoreApplication>
#include <chrono>
#include <memory>

namespace {

using namespace std::chrono_literals;
using Messages = std::vector<std::string>;

class SignsOfLifeTest : public SimulatedHub {
protected:
    static void SetUpTestSuite() { _application = std::make_unique<TestApplication>(); }
    static void TearDownTestSuite() { _application.reset(); }

private:
    inline static std::unique_ptr<TestApplication> _application;
};

TEST_F(SignsOfLifeTest, AHubWithBothPortsIsReadyOnce) {
    const NotifySocket manager;
    const Listeners listeners(0, 0, nullptr);
    EXPECT_EQ(manager.received(), Messages{});
    const SignsOfLife signs(listeners);
    EXPECT_EQ(manager.received(), Messages{"READY=1"});
}

TEST_F(SignsOfLifeTest, AHubWithoutOneOfItsPortsSaysNothing) {
    const NotifySocket manager("2000");
    const Listeners first(0, 0, nullptr);
    const Listeners withoutMessages(first.rpcServer->serverPort(), 0, nullptr);
    const Listeners withoutImages(0, first.httpServer->serverPort(), nullptr);
    Listeners withoutAny(0, 0, nullptr);
    withoutAny.httpServer.reset();
    withoutAny.rpcServer.reset();
    for (const Listeners* listeners : {&withoutMessages, &withoutImages, static_cast<const Listeners*>(&withoutAny)}) {
        const SignsOfLife signs(*listeners);
        EXPECT_EQ(manager.received(), Messages{});
    }
}

TEST_F(SignsOfLifeTest, TheEventLoopTellsAgainAndAgainThatItGoesOn) {
    const NotifySocket manager("2000");
    const Listeners listeners(0, 0, nullptr);
    const SignsOfLife signs(listeners);
    EXPECT_EQ(manager.received(), Messages{"READY=1"});
    for (int time = 0; time < 3; ++time) {
        Messages told;
        EXPECT_TRUE(waitUntil([&] {
            QCoreApplication::processEvents();
            told = manager.received();
            return !told.empty();
        }));
        EXPECT_EQ(told.front(), "WATCHDOG=1");
    }
}

TEST_F(SignsOfLifeTest, SignsComeSoOftenThatACaptureMayTakeNearlyAllOfTheWatchdogsTime) {
    EXPECT_EQ(SignsOfLife::intervalFor(120s), 6s);
    EXPECT_EQ(SignsOfLife::intervalFor(25ms), 1ms);
    EXPECT_EQ(SignsOfLife::intervalFor(1us), 1ms) << "a timer has no less";
    EXPECT_EQ(SignsOfLife::intervalFor(std::chrono::microseconds::max()), 24h) << "a timer has an end";
}

} // namespace
