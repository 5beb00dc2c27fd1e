#include "Services/LarkspurWindowsCameraHub/Listeners.h"

#include "Platform/Interface/CameraPlatform.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"
#include "Tests/Support/SimulatedHub.h"

#include <log4cxx/appenderskeleton.h>

#include <stdexcept>
#include <utility>

namespace {

using Texts = std::vector<std::string>;

/// Answers the first line that the service logs with a platform error, before anybody else sees the line. The search
/// for cameras handles every such error but one that comes while it reports another.
class RaisingAppender final : public log4cxx::AppenderSkeleton {
public:
    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const log4cxx::spi::LoggingEventPtr&, log4cxx::helpers::Pool&) override {
        if (!std::exchange(_hasRaised, true))
            throw winrt::hresult_error(winrt::result::fail, u"Gerät lost.");
    }

private:
    bool _hasRaised = false;
};

class ListenersTest : public SimulatedHub {
protected:
    /// What is left when the search for cameras cannot be begun, which then raises this.
    template <typename Raised> Listeners listenersAfter(Raised raised) {
        Platform::setCameraPlatformFactory([raised]() -> std::shared_ptr<Platform::CameraPlatform> { throw raised; });
        return Listeners(0, 0, nullptr);
    }
};

TEST_F(ListenersTest, BothListenAndNothingIsLogged) {
    const Listeners listeners(0, 0, nullptr);
    ASSERT_NE(listeners.rpcServer, nullptr);
    ASSERT_NE(listeners.httpServer, nullptr);
    EXPECT_TRUE(listeners.rpcServer->isListening());
    EXPECT_TRUE(listeners.httpServer->isListening());
    EXPECT_EQ(linesOf("ERROR"), Texts{});
}

TEST_F(ListenersTest, APlatformErrorIsLoggedWithItsTextInUtf8AndLeavesNeither) {
    const auto raising = std::make_shared<RaisingAppender>();
    serviceLogger()->addAppender(raising);
    const Listeners listeners = listenersAfter(winrt::hresult_error(winrt::result::fail, u"No cameras."));
    serviceLogger()->removeAppender(raising);
    EXPECT_EQ(listeners.rpcServer, nullptr);
    EXPECT_EQ(listeners.httpServer, nullptr);
    EXPECT_EQ(linesOf("ERROR"), (Texts{"CameraHub encountered an error: Gerät lost."}));
}

TEST_F(ListenersTest, AStandardExceptionIsLoggedAndLeavesNeither) {
    const Listeners listeners = listenersAfter(std::runtime_error("no threads left"));
    EXPECT_EQ(listeners.rpcServer, nullptr);
    EXPECT_EQ(listeners.httpServer, nullptr);
    EXPECT_EQ(linesOf("ERROR"), (Texts{"CameraHub encountered an error: no threads left"}));
}

TEST_F(ListenersTest, AnyOtherExceptionIsLoggedWithoutDetails) {
    const Listeners listeners = listenersAfter(42);
    EXPECT_EQ(listeners.rpcServer, nullptr);
    EXPECT_EQ(listeners.httpServer, nullptr);
    EXPECT_EQ(linesOf("ERROR"), (Texts{"CameraHub encountered an unknown error"}));
}

TEST_F(ListenersTest, APlatformThatCannotBeHadLeavesBothWithoutCameras) {
    const Listeners listeners = listenersAfter(winrt::hresult_error(winrt::result::fail, u"No cameras."));
    EXPECT_NE(listeners.rpcServer, nullptr);
    EXPECT_NE(listeners.httpServer, nullptr);
    EXPECT_EQ(linesOf("ERROR"), (Texts{"CameraEnumeration: could not create watcher - No cameras."}));
}

TEST_F(ListenersTest, ATakenPortIsNotReported) {
    const Listeners first(0, 0, nullptr);
    const Listeners second(first.rpcServer->serverPort(), first.httpServer->serverPort(), nullptr);
    EXPECT_FALSE(second.rpcServer->isListening());
    EXPECT_FALSE(second.httpServer->isListening());
    EXPECT_EQ(linesOf("ERROR"), Texts{});
}

} // namespace
