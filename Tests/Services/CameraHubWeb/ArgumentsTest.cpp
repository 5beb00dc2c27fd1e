#include "Services/CameraHubWeb/Arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace CameraHubWeb {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::optional<Arguments> parse(std::vector<const char*> texts) {
    texts.insert(texts.begin(), "camera-hub-web");
    return parseArguments(static_cast<int>(texts.size()), texts.data());
}

/// What is told; empty where the line is right.
std::string refusal(const std::vector<const char*>& texts) {
    try {
        parse(texts);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(ArgumentsTest, WithoutArgumentsOnlyThisMachineIsServed) {
    const Arguments arguments = *parse({});
    EXPECT_EQ(arguments.address, "127.0.0.1");
    EXPECT_EQ(arguments.port, 8080);
    EXPECT_EQ(arguments.hub.host, "localhost");
    EXPECT_EQ(arguments.hub.messagePort, 3141);
    EXPECT_EQ(arguments.hub.imagePort, 3142);
    EXPECT_FALSE(arguments.tls);
    EXPECT_EQ(arguments.keptStills, 32U);
    EXPECT_EQ(arguments.keptMemory, 256U);
    EXPECT_EQ(arguments.idleTime, std::chrono::minutes(1));
    EXPECT_EQ(arguments.connections, 1024);
}

TEST(ArgumentsTest, AnAddressHasAPort) {
    EXPECT_EQ(parse({"--listen", "127.0.0.1:0"})->port, 0);
    EXPECT_EQ(parse({"--listen", "[::1]:81"})->address, "::1");
    EXPECT_EQ(parse({"--listen", "127.0.0.2:65535"})->port, 65535);
}

TEST(ArgumentsTest, WhatIsNoAddressWithAPortIsRefused) {
    for (const char* const where : {"", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
                                    "127.0.0.1:80x", "::1:8080", "[::1]", "[127.0.0.1]", "localhost:8080", "[::1:80"})
        EXPECT_THAT(refusal({"--listen", where}), HasSubstr("is no address with a port")) << where;
}

TEST(ArgumentsTest, BeyondThisMachineThereIsATokenUnlessItIsSaidThatThereIsNone) {
    for (const char* const where : {"0.0.0.0:8080", "[::]:8080", "192.0.2.1:8080", "[2001:db8::1]:8080"}) {
        EXPECT_THAT(refusal({"--listen", where}), HasSubstr("--token-file")) << where;
        EXPECT_EQ(refusal({"--listen", where, "--token-file", "token"}), "") << where;
        EXPECT_EQ(refusal({"--listen", where, "--no-token"}), "") << where;
    }
    for (const char* const where : {"127.0.0.1:8080", "127.1.2.3:8080", "[::1]:8080"})
        EXPECT_EQ(refusal({"--listen", where}), "") << where;
}

TEST(ArgumentsTest, WhatContradictsEachOtherIsRefused) {
    EXPECT_THAT(refusal({"--no-token", "--token-file", "token"}), HasSubstr("exclude each other"));
    EXPECT_THAT(refusal({"--tls-certificate", "cert.pem"}), HasSubstr("--tls-key"));
    EXPECT_THAT(refusal({"--tls-key", "key.pem"}), HasSubstr("--tls-certificate"));
}

TEST(ArgumentsTest, CertificateAndKeyBelongTogether) {
    const Arguments arguments = *parse({"--tls-certificate", "cert.pem", "--tls-key", "key.pem"});
    EXPECT_EQ(arguments.tls->certificate, "cert.pem");
    EXPECT_EQ(arguments.tls->key, "key.pem");
}

TEST(ArgumentsTest, NamesAreGivenOneByOne) {
    EXPECT_THAT(parse({"--allow-host", "lab.example", "--allow-host", "cameras"})->names,
                ElementsAre("lab.example", "cameras"));
}

TEST(ArgumentsTest, WhatIsNoNameOfAHostIsRefused) {
    for (const char* const name : {"", "a b", "http://lab", "ger\xc3\xa4t", "lab\t"}) {
        EXPECT_THAT(refusal({"--hub", name}), HasSubstr("is no name of a host")) << name;
        EXPECT_THAT(refusal({"--allow-host", name}), HasSubstr("is no name of a host")) << name;
    }
    EXPECT_EQ(parse({"--hub", "fe80::1%eth0"})->hub.host, "fe80::1%eth0");
}

TEST(ArgumentsTest, AValueOutsideOfItsRangeIsRefused) {
    for (const char* const option : {"--keep", "--keep-memory", "--max-connections", "--hub-port", "--hub-image-port"})
        for (const char* const value : {"0", "-1", "x", "", "100001"})
            EXPECT_THAT(refusal({option, value}), HasSubstr("see: camera-hub-web --help")) << option << " " << value;
    EXPECT_THAT(refusal({"--idle", "soon"}), HasSubstr("is no time"));
}

TEST(ArgumentsTest, WhatThereIsNotIsRefused) {
    EXPECT_THAT(refusal({"--lisen", "127.0.0.1:80"}), HasSubstr("--help"));
    EXPECT_THAT(refusal({"start"}), HasSubstr("--help"));
}

} // namespace
} // namespace CameraHubWeb
