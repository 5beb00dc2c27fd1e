#include "Framework/CXX/Network/HttpResponse.h"

#include "Tests/Framework/CXX/Network/HttpFixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

class HttpResponseTest : public HttpFixture {
protected:
    /// The bytes that the steps put on the wire.
    std::string wire(const std::function<void(HttpResponse&)>& steps) {
        route("/", [steps](HttpRequest*, HttpResponse* response) { steps(*response); });
        return exchange("GET / HTTP/1.1\r\n\r\n");
    }
};

TEST_F(HttpResponseTest, FinishAloneSendsTheDefaultsInChunks) {
    EXPECT_EQ(wire([](HttpResponse& response) { response.finish(); }),
              "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, WithALengthTheBodyGoesOutAsItIs) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentType("image/png");
                  response.setStatus(200);
                  response.setContentLength(5);
                  response.sendHeaders();
                  response.write("a\0b", 3);
                  response.write("cd"s);
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Type: image/png\r\n\r\na\0bcd"s);
}

TEST_F(HttpResponseTest, AContentLengthOf0IsSentAndNotChunked) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentLength(0);
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n");
}

TEST_F(HttpResponseTest, SharedBytesGoOutAsTheyAreAndAreNotKept) {
    const auto bytes = std::make_shared<const std::vector<unsigned char>>(31, 'x');
    EXPECT_EQ(wire([&](HttpResponse& response) {
                  response.setContentLength(31);
                  response.sendHeaders();
                  response.write(bytes);
                  response.finish();
              }),
              plainResponse(std::string(31, 'x')));
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST_F(HttpResponseTest, SharedBytesAreAChunkLikeOthers) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.sendHeaders();
                  response.write(std::make_shared<const std::vector<unsigned char>>(31, 'x'));
                  response.write(std::make_shared<const std::vector<unsigned char>>());
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n1F\r\n" +
                  std::string(31, 'x') + "\r\n0\r\n\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, ContentLengthHas64Bits) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentLength(18446744073709551615U);
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551615\r\nContent-Type: text/html\r\n\r\n");
}

TEST_F(HttpResponseTest, EachWriteIsAChunkWithItsSizeInUpperCaseHexadecimal) {
    const unsigned char bytes[] = {0, 255};
    EXPECT_EQ(wire([&](HttpResponse& response) {
                  response.sendHeaders();
                  response.write(std::string(171, 'x'));
                  response.write(bytes, 2);
                  response.write(std::string(16, 'y'));
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\nAB\r\n" +
                  std::string(171, 'x') + "\r\n2\r\n\0\xFF\r\n10\r\n"s + std::string(16, 'y') + "\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, AChunkOfNothingOrLessIsWrittenAs0) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.sendHeaders();
                  response.write("abc", 0);
                  response.write("abc", -5);
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n"
              "0\r\n\r\n0\r\n\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, HeadersComeInByteOrderOfTheirNames) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setHeader("X-Late", "1");
                  response.setHeader("Accept-Ranges", "none");
                  response.setHeader("X-Late", "2");
                  response.setHeader("Content-Type", "replaced by the content type");
                  response.setContentLength(0);
                  response.finish();
              }),
              "HTTP/1.1 200 OK\r\nAccept-Ranges: none\r\nContent-Length: 0\r\nContent-Type: text/html\r\n"
              "X-Late: 2\r\n\r\n");
}

TEST_F(HttpResponseTest, AnOwnStatusTextWinsAndNullEmptiesIt) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setStatusText("Fine");
                  response.setContentLength(0);
                  response.sendHeaders();
                  response.setStatusText(nullptr);
                  response.setStatus(201);
                  response.sendHeaders();
                  response.finish();
              }),
              "HTTP/1.1 200 Fine\r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n"
              "HTTP/1.1 201 Created\r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n");
}

TEST_F(HttpResponseTest, AStatusWithoutATextEndsInABlank) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setStatus(599);
                  response.setContentLength(0);
                  response.finish();
              }),
              "HTTP/1.1 599 \r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n");
}

TEST_F(HttpResponseTest, WriteDoesNotSendTheHeaders) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.write("early"s);
                  response.finish();
              }),
              "earlyHTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, SendErrorEndsTheResponseByItself) {
    EXPECT_EQ(wire([](HttpResponse& response) { response.sendError(404, nullptr); }), notFoundResponse);
}

TEST_F(HttpResponseTest, SendErrorTakesAnOwnTextAndForgetsWhatWasSet) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentType("image/png");
                  response.setStatusText("Other");
                  response.sendError(404, "Image does not exist");
              }),
              "HTTP/1.1 404 Image does not exist\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n"
              "62\r\n<html><title>404 Image does not exist</title><body><h1>404 Image does not exist</h1></body></html>"
              "\r\n0\r\n\r\n");
}

TEST_F(HttpResponseTest, FinishBehindSendErrorWritesTheTerminatorAgain) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.sendError(404, nullptr);
                  response.finish();
              }),
              notFoundResponse + "0\r\n\r\n");
}

TEST_F(HttpResponseTest, SendErrorKeepsALengthThatWasSet) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentLength(76);
                  response.sendError(418, "");
              }),
              "HTTP/1.1 418 I'm a teapot\r\nContent-Length: 76\r\nContent-Type: text/html\r\n\r\n"
              "<html><title>418 I'm a teapot</title><body><h1>418 I'm a teapot</h1></body></html>");
}

TEST_F(HttpResponseTest, SendErrorSendsTheHeadersAgain) {
    EXPECT_EQ(wire([](HttpResponse& response) {
                  response.setContentLength(0);
                  response.sendHeaders();
                  response.sendError(500, "x");
              }),
              "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n"
              "HTTP/1.1 500 x\r\nContent-Length: 0\r\nContent-Type: text/html\r\n\r\n"
              "<html><title>500 x</title><body><h1>500 x</h1></body></html>");
}

TEST_F(HttpResponseTest, ALargeBodyArrivesWhole) {
    const std::string body(12000000, '\x89');
    EXPECT_EQ(wire([&](HttpResponse& response) { respond(&response, body); }), plainResponse(body));
}

TEST_F(HttpResponseTest, KnowsExactlyTheseUsualTexts) {
    const std::map<int, std::string> usual = {
        // clang-format off
        {100, "Continue"},
        {101, "Switching Protocols"},
        {200, "OK"},
        {201, "Created"},
        {202, "Accepted"},
        {203, "Non-Authoritative Information"},
        {204, "No Content"},
        {205, "Reset Content"},
        {206, "Partial Content"},
        {300, "Multiple Choices"},
        {301, "Moved Permanently"},
        {302, "Found"},
        {303, "See Other"},
        {304, "Not Modified"},
        {305, "Use Proxy"},
        {307, "Temporary Redirect"},
        {308, "Resume Incomplete"},
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {402, "Payment Required"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {406, "Not Acceptable"},
        {407, "Proxy Authentication Required"},
        {408, "Request Time-out"},
        {409, "Conflict"},
        {410, "Gone"},
        {411, "Length Required"},
        {412, "Precondition Failed"},
        {413, "Request Entity Too Large"},
        {414, "Request-URI Too Large"},
        {415, "Unsupported Media Type"},
        {416, "Requested range not satisfiable"},
        {417, "Expectation Failed"},
        {418, "I'm a teapot"},
        {426, "Upgrade Required"},
        {428, "Precondition Required"},
        {429, "Too Many Requests"},
        {500, "Internal Server Error"},
        {501, "Not Implemented"},
        {502, "Bad Gateway"},
        {503, "Service Unavailable"},
        {504, "Gateway Time-out"},
        {505, "HTTP Version not supported "},
        {506, "Variant Also Negotiates"},
        {510, "Not Extended"},
        // clang-format on
    };
    std::map<int, std::string> known;
    for (int code = -1; code < 1000; ++code)
        if (const std::string text = HttpResponse::statusTextFor(code); !text.empty())
            known[code] = text;
    EXPECT_EQ(known, usual);
}

} // namespace
