#include "Framework/CXX/Network/TCPServer.h"
#include "Tests/Framework/CXX/Network/HttpFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

using namespace std::string_literals;

namespace {

constexpr int rounds = 200;

class RandomBytes {
public:
    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(_random); }

    std::string bytes(std::size_t size) {
        std::string text(size, '\0');
        std::generate(text.begin(), text.end(), [this] { return static_cast<char>(below(256)); });
        return text;
    }

    /// Sends the text in pieces of random sizes, with the event loop running in between.
    void sendInPieces(TestConnection& connection, std::string_view text) {
        while (!text.empty()) {
            const std::size_t size = std::min(text.size(), 1 + below(20));
            connection.send(text.substr(0, size));
            text.remove_prefix(size);
        }
    }

private:
    std::mt19937 _random{20261113};
};

TEST(RandomBytesTest, TCPClientCutsAnyBytesAtTheDelimiter) {
    RandomBytes random;
    for (int round = 0; round < rounds; ++round) {
        std::string seen;
        TCPServer server(0, nullptr, [&](const std::string& message) {
            seen += message + '\0';
            return "."s;
        });
        TestConnection connection(server.serverPort());
        const std::string text = random.bytes(random.below(100)) + '\0' + random.bytes(random.below(100)) + '\0';
        random.sendInPieces(connection, text);
        const auto messages = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\0'));
        connection.receive(4 * messages);
        EXPECT_EQ(seen, text);
    }
}

/// Heads made of random pieces. None has a line end of its own where a request would begin, or a transfer
/// coding: those hold the thread for good.
std::string randomHead(RandomBytes& random) {
    static constexpr std::string_view pieces[] = {
        "GET ", "/res/", "?",    "%41", "%",    " HTTP/1.1", "\r",
        "\n",   ":",     "Host", "\t",  "\xFF", "\r\nA:",    "\r\nContent-Length:",
        "x2",   " ",     "\r\r", "\n\r"};
    std::string head = random.below(2) == 0 ? "GET /res/" : "G";
    for (std::size_t i = random.below(12); i > 0; --i) {
        head +=
            random.below(4) == 0 ? random.bytes(random.below(8)) : std::string(pieces[random.below(std::size(pieces))]);
    }
    // Nothing within may end the head: the bytes behind would begin a request, perhaps with a line end.
    for (std::size_t at = head.find("\r\n\r"); at != std::string::npos; at = head.find("\r\n\r"))
        head.erase(at, 1);
    return head;
}

class RandomHttpBytesTest : public HttpFixture {};

TEST_F(RandomHttpBytesTest, EveryHeadIsAnsweredOnceAndTheConnectionGoesOn) {
    RandomBytes random;
    int handled = 0;
    route("/res/.*", [&](HttpRequest* request, HttpResponse* response) {
        ++handled;
        EXPECT_EQ(request->matches.str(), request->path);
        respond(response, "");
    });
    route("/end", [](HttpRequest*, HttpResponse* response) { respond(response, "end"); });
    for (int round = 0; round < rounds; ++round) {
        TestConnection own(server.serverPort());
        random.sendInPieces(own, randomHead(random) + "x\r\n\r\n");
        random.sendInPieces(own, "GET /end HTTP/1.1\r\n\r\n");
        const std::string received = own.receiveUntil(plainResponse("end"));
        const std::string first = received.substr(0, received.size() - plainResponse("end").size());
        EXPECT_TRUE(first == notFoundResponse || first == plainResponse("")) << first;
    }
    EXPECT_GT(handled, 0);
}

} // namespace
