#include "Tests/Services/CameraHubWeb/Http/RawClient.h"
#include "Tests/Services/CameraHubWeb/Http/ServerFixture.h"
#include "Tests/Support/WaitUntil.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <vector>

using namespace CameraHubWeb;
using testing::HasSubstr;

namespace {

const std::string get = "GET / HTTP/1.1\r\nHost: x\r\n\r\n";

class ConnectionLimitTest : public ServerFixture {
protected:
    /// One that is served, and stays open.
    std::unique_ptr<RawClient> connected(const std::string& address = "127.0.0.1") {
        auto client = std::make_unique<RawClient>(port, RawClient::Security::Plain, address);
        client->send(get);
        EXPECT_EQ(client->receiveAnswer().status, 200);
        return client;
    }

    bool isServedAgain() {
        return waitUntil([this] { return askOnce(port, get).status == 200; });
    }
};

/// An address of this machine that others reach it by; empty where it has none.
std::string outerAddress() {
    ifaddrs* all = nullptr;
    std::string found;
    if (getifaddrs(&all) != 0)
        return found;
    for (const ifaddrs* one = all; one; one = one->ifa_next)
        if (one->ifa_addr && one->ifa_addr->sa_family == AF_INET && (one->ifa_flags & IFF_LOOPBACK) == 0) {
            std::array<char, INET_ADDRSTRLEN> text{};
            const auto* const address = reinterpret_cast<const sockaddr_in*>(one->ifa_addr);
            found = inet_ntop(AF_INET, &address->sin_addr, text.data(), text.size());
        }
    freeifaddrs(all);
    return found;
}

/// Takes all file descriptors that the process may have but a few.
class FewDescriptors {
public:
    explicit FewDescriptors(int left) {
        getrlimit(RLIMIT_NOFILE, &_before);
        rlimit few = _before;
        few.rlim_cur = 256;
        setrlimit(RLIMIT_NOFILE, &few);
        for (int fd = ::open("/dev/null", O_RDONLY); fd >= 0; fd = ::dup(fd))
            _taken.push_back(fd);
        EXPECT_GE(static_cast<int>(_taken.size()), left);
        for (; left > 0 && !_taken.empty(); --left) {
            ::close(_taken.back());
            _taken.pop_back();
        }
    }

    ~FewDescriptors() {
        for (const int fd : _taken)
            ::close(fd);
        setrlimit(RLIMIT_NOFILE, &_before);
    }

    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit _before{};
    std::vector<int> _taken;
};

TEST_F(ConnectionLimitTest, OneTooManyIsToldSo) {
    settings.limits.connections = 3;
    serveText();
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 3; ++i)
        clients.push_back(connected());
    RawClient late(port);
    late.send(get);
    const RawAnswer answer = late.receiveAnswer();
    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(answer.header("retry-after"), "5");
    EXPECT_THAT(answer.body, HasSubstr("urn:camera-hub:problem:too-many"));
    EXPECT_EQ(late.receiveAll(), "");
    clients[0]->send(get);
    EXPECT_EQ(clients[0]->receiveAnswer().status, 200);
    clients.pop_back();
    EXPECT_TRUE(isServedAgain());
}

TEST_F(ConnectionLimitTest, ThoseThatAreTurnedAwayAreBoundedToo) {
    settings.limits.connections = 0;
    serveText();
    std::vector<std::unique_ptr<RawClient>> silent;
    for (int i = 0; i < 64; ++i)
        silent.push_back(std::make_unique<RawClient>(port));
    RawClient another(port);
    EXPECT_EQ(another.receiveAll(), "");
    silent.clear();
    EXPECT_TRUE(waitUntil([this] {
        try {
            return askOnce(port, get).status == 503;
        } catch (const std::runtime_error&) {
            return false;
        }
    }));
}

TEST_F(ConnectionLimitTest, AnAddressHasItsShare) {
    const std::string address = outerAddress();
    if (address.empty())
        GTEST_SKIP() << "this machine has no address but its own";
    settings.address = "0.0.0.0";
    settings.limits.connectionsOfAddress = 2;
    serveText();
    const auto first = connected(address);
    {
        const auto second = connected(address);
        RawClient third(port, RawClient::Security::Plain, address);
        third.send(get);
        const RawAnswer answer = third.receiveAnswer();
        EXPECT_EQ(answer.status, 429);
        EXPECT_THAT(answer.body, HasSubstr("urn:camera-hub:problem:too-many"));
        EXPECT_EQ(askOnce(port, get).status, 200); // from another address
    }
    EXPECT_TRUE(waitUntil([&] {
        RawClient again(port, RawClient::Security::Plain, address);
        again.send(get);
        return again.receiveAnswer().status == 200;
    }));
}

TEST_F(ConnectionLimitTest, ThisMachineHasNoShare) {
    settings.limits.connectionsOfAddress = 1;
    serveText();
    const auto first = connected();
    const auto second = connected();
    first->send(get);
    EXPECT_EQ(first->receiveAnswer().status, 200);
}

TEST_F(ConnectionLimitTest, AnIdleConnectionIsClosed) {
    settings.limits.idleTime = std::chrono::milliseconds(50);
    serveText();
    RawClient silent(port);
    EXPECT_EQ(silent.receiveAll(), "");
    EXPECT_EQ(connected()->receiveAll(), "");
}

TEST_F(ConnectionLimitTest, ARequestThatIsHandledIsNotIdle) {
    settings.limits.idleTime = std::chrono::milliseconds(50);
    settings.limits.requestTime = std::chrono::milliseconds(50);
    settings.limits.writeTime = std::chrono::milliseconds(50);
    std::promise<std::shared_ptr<HttpExchange>> asked;
    serve([&asked](const std::shared_ptr<HttpExchange>& exchange) { asked.set_value(exchange); });
    RawClient client(port);
    client.send(get);
    const auto exchange = asked.get_future().get();
    RawClient silent(port);
    EXPECT_EQ(silent.receiveAll(), ""); // by now all of those times are over
    exchange->send(textResponse(200, "text/plain", "hello"));
    EXPECT_EQ(client.receiveAnswer().body, "hello");
}

TEST_F(ConnectionLimitTest, AcceptingGoesOnWhenDescriptorsAreThereAgain) {
    serveText();
    std::vector<std::unique_ptr<RawClient>> clients;
    {
        const FewDescriptors few(5); // three clients and what serves two of them
        clients.push_back(connected());
        clients.push_back(connected());
        clients.push_back(std::make_unique<RawClient>(port));
        clients[2]->send(get);
        clients[0]->send(get);
        EXPECT_EQ(clients[0]->receiveAnswer().status, 200);
    }
    EXPECT_EQ(clients[2]->receiveAnswer().status, 200);
}

} // namespace
