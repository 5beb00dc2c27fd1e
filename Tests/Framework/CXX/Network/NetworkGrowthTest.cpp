#include "Framework/CXX/Network/TCPServer.h"
#include "Tests/Framework/CXX/Network/HttpFixture.h"
#include "Tests/Framework/CXX/Network/PlainPeer.h"
#include "Tests/Support/Growth.h"

#include <string>

using namespace std::string_literals;

namespace {

/// What a client sends, and how.
struct Input {
    GrowingText text;
    std::size_t chunk; ///< bytes that are sent together
};

constexpr std::size_t whole = 10'000'000;
constexpr std::size_t smallChunk = 50;

std::ostream& operator<<(std::ostream& out, const Input& input) { return out << input.text; }

/// Sends the text in such chunks, each when the one before has been read, and waits for the end of the replies.
void sendAndReceive(quint16 port, const std::string& text, std::size_t chunk, const std::string& end) {
    PlainPeer peer(port);
    for (std::size_t at = 0; at < text.size(); at += chunk) {
        peer.send(std::string_view(text).substr(at, chunk));
        QEventLoop().processEvents(QEventLoop::AllEvents);
    }
    EXPECT_TRUE(turnUntil([&] { return peer.received().ends_with(end); })) << peer.received().size();
}

class HttpGrowthTest : public HttpFixture, public testing::WithParamInterface<Input> {};

TEST_P(HttpGrowthTest, IsLinear) {
    route("/end", [](HttpRequest*, HttpResponse* response) { respond(response, "end"); });
    route("/res/.*", [](HttpRequest*, HttpResponse* response) { respond(response, ""); });
    EXPECT_LT(growth([&](std::size_t size) {
                  return [this, text = GetParam().text.ofSize(size) + "GET /end HTTP/1.1\r\n\r\n"] {
                      sendAndReceive(server.serverPort(), text, GetParam().chunk, plainResponse("end"));
                  };
              }),
              linearGrowth);
}

const std::string head = "GET /res/x HTTP/1.1\r\n";
const std::string headEnd = "\r\n\r\n";

INSTANTIATE_TEST_SUITE_P(
    Network, HttpGrowthTest,
    testing::Values(Input{{"LongPath", "GET /res/", "x", " HTTP/1.1" + headEnd}, whole},
                    Input{{"LongPathOfNoRoute", "GET /re", "/res/", " HTTP/1.1" + headEnd}, whole},
                    Input{{"LongPathInPieces", "GET /res/", "x", " HTTP/1.1" + headEnd}, smallChunk},
                    Input{{"Query", "GET /res/?", "%41", " HTTP/1.1" + headEnd}, whole},
                    Input{{"QueryOfPercentSigns", "GET /res/?", "%", " HTTP/1.1" + headEnd}, whole},
                    Input{{"QueryDecodedAgainAndAgain", "GET /res/?%", "25", " HTTP/1.1" + headEnd}, whole},
                    Input{{"QuestionMarks", "GET /res/?", "?", " HTTP/1.1" + headEnd}, whole},
                    Input{{"Blanks", "GET", " ", " HTTP/1.1" + headEnd}, whole},
                    Input{{"Headers", head, "Name#: value\r\n", "\r\n"}, whole},
                    Input{{"HeadersInPieces", head, "Name#: value\r\n", "\r\n"}, smallChunk},
                    Input{{"OneHeaderAgainAndAgain", head, "Name: value\r\n", "\r\n"}, whole},
                    Input{{"HeadersOfLongNames", head, std::string(1000, 'n') + "#:\r\n", "\r\n"}, whole},
                    Input{{"LinesWithoutAName", head, "x\r\n", "\r\n"}, whole},
                    Input{{"OneLongName", head, "n", ": value" + headEnd}, whole},
                    Input{{"OneLongValue", head + "Name:", " ", "x" + headEnd}, whole},
                    Input{{"Colons", head, ":", headEnd}, whole},
                    Input{{"LineFeeds", head + "x", "\n", headEnd}, whole},
                    Input{{"CarriageReturns", head + "x", "\r", "x" + headEnd}, whole},
                    Input{{"Requests", "", head + "\r\n", ""}, whole},
                    Input{{"RequestsInPieces", "", head + "\r\n", ""}, smallChunk},
                    Input{{"Bodies", "", head + "Content-Length: 3\r\n\r\nxxx", ""}, whole}),
    [](const auto& tested) { return std::string(tested.param.text.name); });

class HttpBodyGrowthTest : public HttpFixture {};

TEST_F(HttpBodyGrowthTest, IsLinear) {
    route("/.*", [](HttpRequest* request, HttpResponse* response) { respond(response, request->path.substr(1)); });
    for (const std::size_t chunk : {whole, smallChunk}) {
        const auto exchangeOfSize = [&](std::size_t size) {
            return [this, chunk,
                    text = "GET / HTTP/1.1\r\nContent-Length: " + std::to_string(size) + headEnd +
                           std::string(size, '\r') + "GET /end HTTP/1.1\r\n\r\n"] {
                sendAndReceive(server.serverPort(), text, chunk, plainResponse("end"));
            };
        };
        EXPECT_LT(growth(exchangeOfSize), linearGrowth);
    }
}

class TCPGrowthTest : public testing::TestWithParam<Input> {};

TEST_P(TCPGrowthTest, IsLinear) {
    const TCPServer server(0, nullptr, [](const std::string& message) { return message.substr(0, 3); });
    EXPECT_LT(growth([&](std::size_t size) {
                  return [&, text = GetParam().text.ofSize(size) + "end\0"s] {
                      sendAndReceive(server.serverPort(), text, GetParam().chunk, "end\r\n\0"s);
                  };
              }),
              linearGrowth);
}

INSTANTIATE_TEST_SUITE_P(Network, TCPGrowthTest,
                         testing::Values(Input{{"LongMessage", "", "x", "\0"s}, whole},
                                         Input{{"LongMessageInPieces", "", "x", "\0"s}, smallChunk},
                                         Input{{"EmptyMessages", "", "\0"s, ""}, whole},
                                         Input{{"Messages", "", "x\0"s, ""}, whole},
                                         Input{{"MessagesInPieces", "", "x\0"s, ""}, smallChunk}),
                         [](const auto& tested) { return std::string(tested.param.text.name); });

TEST(LateReplyGrowthTest, IsLinear) {
    constexpr std::size_t repliesEach = 10; // bytes of reply for each byte of a message
    const TCPServer server(0, nullptr,
                           [](const std::string& message) { return std::string(repliesEach * message.size(), 'r'); });
    EXPECT_LT(growth([&](std::size_t size) {
                  return [&, size] {
                      PlainPeer peer(server.serverPort());
                      const std::string message = std::string(smallChunk, 'x') + '\0';
                      for (std::size_t sent = 0; sent < size; sent += message.size()) {
                          peer.send(message);
                          QEventLoop().processEvents(QEventLoop::AllEvents);
                      }
                      peer.send("\0"s);
                      EXPECT_TRUE(turnUntil([&] { return peer.received().ends_with("r\r\n\0\r\n\0"s); }));
                  };
              }),
              linearGrowth);
}

} // namespace
