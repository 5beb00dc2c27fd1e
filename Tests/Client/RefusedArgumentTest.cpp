#include "Tests/Client/FakeHub.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace CameraHub;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

/// What would end the hub, stop it for good, or mean something else to it, is refused, and nothing is sent.
class RefusedArgumentTest : public testing::Test {
protected:
    ~RefusedArgumentTest() override {
        _hub.messages.answer(FakeHub::result(R"("2.9")"));
        _client.version();
        EXPECT_EQ(_hub.messages.requests().size(), 1U);
        EXPECT_TRUE(_hub.images.requests().empty());
    }

    void refusesCapture(const CaptureRequest& request) {
        EXPECT_THROW(_client.capture(request), std::invalid_argument);
        EXPECT_THROW(_client.takeStill(request), std::invalid_argument);
    }

    FakeHub _hub;
    CameraHubClient _client = _hub.connect();
};

TEST_F(RefusedArgumentTest, AnExposureThatTheHubWouldTakeForNoneOrForAnotherType) {
    for (const auto exposure : {0us, -1us, CaptureRequest::longestExposure + 1us, std::chrono::microseconds::min(),
                                std::chrono::microseconds::max()})
        refusesCapture({"desk", exposure, 0ms});
}

TEST_F(RefusedArgumentTest, PerCentBeyondAHundred) {
    for (const int percent : {-1, 101, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        refusesCapture({"desk", Percent(percent), 0ms});
}

TEST_F(RefusedArgumentTest, ATimeToSettleThatTheHubWouldBeGoneFor) {
    for (const auto settle : {-1ms, CaptureRequest::longestSettle + 1ms, std::chrono::milliseconds::min(),
                              std::chrono::milliseconds::max()})
        refusesCapture({"desk", 20ms, settle});
}

TEST_F(RefusedArgumentTest, AUidThatIsNoText) {
    for (const auto& uid : {"de\0sk"s, "\xFF"s, "\xC3"s, "\xED\xA0\x80"s})
        refusesCapture({uid});
}

TEST_F(RefusedArgumentTest, AnImageIdThatIsNone) {
    const std::string id(FakeHub::oneId);
    for (const auto& other :
         {""s, "none"s, "../"s + id, id + " ", id.substr(1), "{" + id + "}", id + "\r\nA: b", id.substr(0, 34) + "\r\n",
          id.substr(0, 35) + "g", id.substr(0, 35) + '\0', "%" + id.substr(1), "0c2a6b5e07f3d-4c1a-9a55-52c1d0e4b7f6"s})
        EXPECT_THROW(_client.fetch(other), std::invalid_argument) << other;
}

// The hub overwrites its logging.properties before it refuses the first one.
TEST_F(RefusedArgumentTest, APathWithoutDiagnosticsOrThatIsNoText) {
    for (const auto& path : {"/data/mine"s, ""s, "/Diagnostics/\0"s, "/Diagnostics/\xFF"s})
        EXPECT_THROW(_client.redirectDiagnostics(path), std::invalid_argument) << path;
}

TEST(RefusedAddressTest, AHostThatWouldBreakOutOfItsHeader) {
    FakeHub hub;
    for (const auto& host : {""s, "localhost\r\nTransfer-Encoding: chunked"s, "local host"s, "[::1]"s, "localhost\0"s,
                             "localhost/"s, "user@localhost"s, "höst"s}) {
        Address address = hub.address();
        address.host = host;
        EXPECT_THROW(CameraHubClient(address, {}), std::invalid_argument) << host;
    }
}

TEST(RefusedAddressTest, APortOfZero) {
    FakeHub hub;
    EXPECT_THROW(CameraHubClient({hub.host, 0, hub.images.port()}), std::invalid_argument);
    EXPECT_THROW(CameraHubClient({hub.host, hub.messages.port(), 0}), std::invalid_argument);
}

TEST(RefusedOptionsTest, ATimeThatIsNoneOrBeyondADay) {
    FakeHub hub;
    for (const auto time : {0ms, -1ms, std::chrono::milliseconds(24h) + 1ms, std::chrono::milliseconds::max()}) {
        Options options;
        options.connectTimeout = time;
        EXPECT_THROW(hub.connect(options), std::invalid_argument);
        options = {};
        options.callTimeout = time;
        EXPECT_THROW(hub.connect(options), std::invalid_argument);
    }
    Options options;
    options.connectTimeout = options.callTimeout = 24h;
    EXPECT_TRUE(hub.connect(options).isConnected());
}

} // namespace
