#include "Tests/Client/FakeHub.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <future>
#include <thread>

using namespace CameraHub;
using namespace std::chrono_literals;
using Then = ScriptedServer::Then;

namespace {

const std::string imageId(FakeHub::oneId);
const CaptureRequest longRequest{std::string(32 << 20, 'a')};

Options withCallTimeout(std::chrono::milliseconds time) {
    Options options;
    options.callTimeout = time;
    return options;
}

TEST(WaitingTest, AHubThatDoesNotAnswerIsTimedOutAndTheConnectionIsLost) {
    FakeHub hub;
    CameraHubClient client = hub.connect(withCallTimeout(20ms));
    EXPECT_THROW(client.version(), TimedOut);
    EXPECT_FALSE(client.isConnected());
    EXPECT_THROW(client.version(), NotConnected);
    EXPECT_THROW(client.fetch(imageId), TimedOut);
}

// Each byte that comes is no reason to wait longer.
TEST(WaitingTest, AReplyThatDoesNotEndIsTimedOut) {
    FakeHub hub;
    CameraHubClient client = hub.connect(withCallTimeout(20ms));
    hub.messages.answer("", Then::GoOnForever);
    EXPECT_THROW(client.version(), TimedOut);
    hub.images.answer("HTTP/1.1 200 OK\r\nContent-Length: 500000000\r\nContent-Type: image/png\r\n\r\n",
                      Then::GoOnForever);
    EXPECT_THROW(client.fetch(imageId), TimedOut);
}

TEST(WaitingTest, ARequestThatTheHubDoesNotTakeIsTimedOut) {
    const ListeningSocket hub;
    CameraHubClient client({"127.0.0.1", hub.port(), hub.port()}, withCallTimeout(100ms));
    EXPECT_THROW(client.capture(longRequest), TimedOut);
}

TEST(WaitingTest, ACaptureMayBesidesTakeItsSettleTime) {
    FakeHub hub;
    CameraHubClient client = hub.connect(withCallTimeout(1ms));
    auto answered = std::async(std::launch::async, [&] {
        EXPECT_TRUE(waitUntil([&] { return hub.messages.requests().size() == 1; }));
        std::this_thread::sleep_for(5ms); // beyond the time of a call
        hub.messages.answer(FakeHub::captured(FakeHub::oneId));
    });
    EXPECT_EQ(client.capture({"desk", 20ms, 60s}).imageId, imageId);
    answered.get();
}

std::atomic<int> signals = 0;

TEST(WaitingTest, AnInterruptionByASignalIsNoMatter) {
    struct sigaction counting{};
    counting.sa_handler = [](int) { ++signals; };
    ASSERT_EQ(sigaction(SIGUSR1, &counting, nullptr), 0);
    signals = 0;
    FakeHub hub;
    CameraHubClient client = hub.connect();
    const pthread_t waiting = pthread_self();
    auto answered = std::async(std::launch::async, [&] {
        EXPECT_TRUE(waitUntil([&] { return hub.messages.requests().size() == 1; }));
        for (int count = 1; count <= 20; ++count) {
            pthread_kill(waiting, SIGUSR1);
            EXPECT_TRUE(waitUntil([&] { return signals == count; }));
        }
        hub.messages.answer(FakeHub::result(R"("2.9")"));
    });
    EXPECT_EQ(client.version(), "2.9");
    answered.get();
}

/// Cancels a client from another thread as soon as the condition holds.
class Canceller {
public:
    template <typename Condition>
    Canceller(const Cancellation& cancellation, Condition condition)
        : _done(std::async(std::launch::async, [cancellation, condition] {
              EXPECT_TRUE(waitUntil(condition));
              cancellation.cancel();
          })) {}

private:
    std::future<void> _done;
};

TEST(CancelledTest, AWaitForAReplyEnds) {
    FakeHub hub;
    const Options options;
    CameraHubClient client = hub.connect(options);
    const Canceller canceller(options.cancellation, [&] { return hub.messages.requests().size() == 1; });
    EXPECT_THROW(client.version(), Cancelled);
    EXPECT_FALSE(client.isConnected());
}

TEST(CancelledTest, AWaitForAnImageEnds) {
    FakeHub hub;
    const Options options;
    CameraHubClient client = hub.connect(options);
    const Canceller canceller(options.cancellation, [&] { return hub.images.requests().size() == 1; });
    EXPECT_THROW(client.fetch(imageId), Cancelled);
}

TEST(CancelledTest, AnImageThatGoesOnEnds) {
    FakeHub hub;
    const Options options;
    CameraHubClient client = hub.connect(options);
    hub.images.answer("HTTP/1.1 200 OK\r\nContent-Length: 500000000\r\nContent-Type: image/png\r\n\r\n",
                      Then::GoOnForever);
    const Canceller canceller(options.cancellation, [&] { return hub.images.requests().size() == 1; });
    EXPECT_THROW(client.fetch(imageId), Cancelled);
}

TEST(CancelledTest, ASendingEnds) {
    ListeningSocket hub;
    const Options options;
    CameraHubClient client({"127.0.0.1", hub.port(), hub.port()}, options);
    const Canceller canceller(options.cancellation, [&] { return hub.bytesThatWait() > 0; });
    EXPECT_THROW(client.capture(longRequest), Cancelled);
}

TEST(CancelledTest, AConnectingEnds) {
    ListeningSocket hub("127.0.0.1", 0);
    hub.fill();
    const Options options;
    const Canceller canceller(options.cancellation, [&] { return hub.halfMadeConnections() > 0; });
    EXPECT_THROW(CameraHubClient({"127.0.0.1", hub.port(), hub.port()}, options), Cancelled);
}

TEST(CancelledTest, AllThatBeginsLaterEndsAtOnceAndSendsNothing) {
    FakeHub hub;
    const Options options;
    CameraHubClient client = hub.connect(options);
    options.cancellation.cancel();
    EXPECT_THROW(client.version(), Cancelled);
    EXPECT_THROW(client.fetch(imageId), Cancelled);
    EXPECT_THROW(client.takeStill({"desk"}), Cancelled);
    EXPECT_THROW(hub.connect(options), Cancelled);
    EXPECT_TRUE(hub.messages.requests().empty());
    EXPECT_TRUE(hub.images.requests().empty());
}

} // namespace
