#include "Tests/Client/FakeHub.h"
#include "Tests/Client/NameOfTwoAddresses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace CameraHub;
using namespace std::chrono_literals;
using testing::StartsWith;

namespace {

/// The text of the error, which has to be a failed connection.
std::string failureOf(const Address& address) {
    try {
        const CameraHubClient client(address);
        return "connected";
    } catch (const ConnectionFailed& error) {
        return error.what();
    }
}

std::uint16_t closedPort() { return ListeningSocket().port(); }

TEST(ConnectingTest, ARefusedConnectionTellsWhereAndWhy) {
    const std::uint16_t port = closedPort();
    EXPECT_EQ(failureOf({"127.0.0.1", port}),
              "cannot connect to 127.0.0.1, port " + std::to_string(port) + ": Connection refused");
}

// Longer than any name: no server is asked for it.
TEST(ConnectingTest, AnUnknownNameTellsWhich) {
    const std::string name(300, 'a');
    EXPECT_THAT(failureOf({name}), StartsWith("cannot connect to " + name + ", port 3141: "));
}

TEST(ConnectingTest, AnImagePortThatRefusesLeavesTheConnectionForMessages) {
    FakeHub hub;
    CameraHubClient client(Address{hub.host, hub.messages.port(), closedPort()});
    EXPECT_THROW(client.fetch(std::string(FakeHub::oneId)), ConnectionFailed);
    hub.messages.answer(FakeHub::result(R"("2.9")"));
    EXPECT_EQ(client.version(), "2.9");
}

TEST(ConnectingTest, AHubThatTakesNoConnectionIsTimedOut) {
    ListeningSocket hub("127.0.0.1", 0);
    hub.fill();
    Options options;
    options.connectTimeout = 20ms;
    EXPECT_THROW(CameraHubClient({"127.0.0.1", hub.port()}, options), TimedOut);
}

TEST(ConnectingTest, TheSecondAddressOfANameIsTriedWhereTheFirstRefuses) {
    const FakeHub hub;
    EXPECT_TRUE(CameraHubClient({nameOfTwoAddresses, hub.messages.port(), hub.images.port()}).isConnected());
}

TEST(ConnectingTest, AnAddressThatDoesNotAnswerLeavesTimeForTheNext) {
    const FakeHub hub;
    ListeningSocket silent("127.0.0.2", 0, hub.messages.port());
    silent.fill();
    Options options;
    options.connectTimeout = 200ms; // of which half is spent on the first
    EXPECT_TRUE(CameraHubClient({nameOfTwoAddresses, hub.messages.port()}, options).isConnected());
}

TEST(ConnectingTest, ANameOfWhichNoAddressAnswersIsRefused) {
    EXPECT_THAT(failureOf({nameOfTwoAddresses, closedPort()}), testing::EndsWith(": Connection refused"));
}

TEST(ConnectingTest, AnAddressMayBeIpv6) {
    if (!hasIpv6Loopback())
        GTEST_SKIP() << "this machine has no IPv6";
    const FakeHub hub("::1");
    EXPECT_TRUE(hub.connect().isConnected());
}

} // namespace
