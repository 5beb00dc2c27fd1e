#include "Tests/Client/FakeHub.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace CameraHub;
using namespace std::string_literals;
using testing::ElementsAre;

namespace {

const std::string imageId(FakeHub::oneId);

std::string fetchAnswered(const std::string& bytes) {
    FakeHub hub;
    hub.images.answer(bytes);
    const std::vector<std::uint8_t> png = hub.connect().fetch(imageId);
    return {png.begin(), png.end()};
}

TEST(FetchTest, AsksForTheImageByItsId) {
    FakeHub hub;
    hub.images.answer(FakeHub::image(FakeHub::png));
    const std::vector<std::uint8_t> png = hub.connect().fetch(imageId);
    EXPECT_EQ(std::string(png.begin(), png.end()), FakeHub::png);
    EXPECT_THAT(hub.images.requests(), ElementsAre("GET /res/" + imageId +
                                                   " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(hub.images.port()) +
                                                   "\r\nConnection: close\r\n\r\n"));
}

TEST(FetchTest, ANumericHostOfIpv6StandsInBrackets) {
    if (!hasIpv6Loopback())
        GTEST_SKIP() << "this machine has no IPv6";
    FakeHub hub("::1");
    hub.images.answer(FakeHub::image(FakeHub::png));
    hub.connect().fetch(imageId);
    EXPECT_THAT(hub.images.requests(),
                ElementsAre(testing::HasSubstr("\r\nHost: [::1]:" + std::to_string(hub.images.port()) + "\r\n")));
}

TEST(FetchTest, ALargeImageComesWhole) {
    std::string png(FakeHub::png);
    for (unsigned i = 0; i < 3'000'000; ++i)
        png += static_cast<char>(i * 7919 >> 4);
    EXPECT_TRUE(fetchAnswered(FakeHub::image(png)) == png);
}

TEST(FetchTest, EachImageHasAConnectionOfItsOwn) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    for (int i = 0; i < 3; ++i) {
        hub.images.answer(FakeHub::image(FakeHub::png), ScriptedServer::Then::End);
        client.fetch(imageId);
    }
    EXPECT_EQ(hub.images.requests().size(), 3U);
}

TEST(FetchTest, HeadersMayHaveOtherCapitalsAndNeighboursAndNoBlanks) {
    EXPECT_EQ(
        fetchAnswered("HTTP/1.1 200 OK\r\nServer: a proxy\r\ncontent-TYPE:image/png\r\nCONTENT-length:  9 \r\n\r\n"
                      "\x89PNG\r\n\x1a\nX and more"),
        "\x89PNG\r\n\x1a\nX");
}

TEST(FetchTest, AnImageThatTheHubDoesNotHaveIsGoneAndTheConnectionForMessagesStays) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.images.answer(FakeHub::noImage());
    EXPECT_THROW(client.fetch(imageId), ImageGone);
    hub.messages.answer(FakeHub::result(R"("2.9")"));
    EXPECT_EQ(client.version(), "2.9");
}

TEST(FetchTest, ItGoesOnWhereTheConnectionForMessagesIsLost) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.messages.answer("", ScriptedServer::Then::End);
    EXPECT_THROW(client.version(), ConnectionEnded);
    hub.images.answer(FakeHub::image(FakeHub::png));
    EXPECT_EQ(client.fetch(imageId).size(), FakeHub::png.size());
}

class UndocumentedImageTest : public testing::TestWithParam<std::string> {};

TEST_P(UndocumentedImageTest, IsAProtocolErrorAndTheConnectionForMessagesStays) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.images.answer(GetParam());
    EXPECT_THROW(client.fetch(imageId), ProtocolError);
    EXPECT_TRUE(client.isConnected());
}

std::string imageWithHead(const std::string& head) { return head + "\r\n\r\n" + std::string(FakeHub::png); }

INSTANTIATE_TEST_SUITE_P(
    Fetch, UndocumentedImageTest,
    testing::Values(
        imageWithHead("hello"), imageWithHead(""),
        imageWithHead("HTTP/1.0 200 OK\r\nContent-Type: image/png\r\n"
                      "Content-Length: 10"),
        imageWithHead("HTTP/1.1 204 No Content\r\nContent-Type: image/png\r\nContent-Length: 10"),
        imageWithHead("HTTP/1.1 404 Not Found\r\nContent-Length: 0"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Length: 10"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 10"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 10\r\nContent-Length: 10"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 10\r\nTransfer-Encoding: chunked"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length:"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: -1"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 10 11"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 536870913"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 99999999999999999999"),
        imageWithHead("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 7"),
        FakeHub::image("GIF89a and the rest"), FakeHub::image(""), std::string(17 * 1024, 'a')));

} // namespace
