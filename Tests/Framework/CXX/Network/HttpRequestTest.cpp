#include "Framework/CXX/Network/HttpRequest.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {

HttpRequest parsed(const std::string& line) {
    HttpRequest request(nullptr);
    EXPECT_TRUE(request.parseRequestLine(line.c_str())) << line;
    return request;
}

std::string queryOf(const std::string& query) { return parsed("GET /?" + query + " HTTP/1.1").query; }

TEST(HttpRequestTest, RequestLineHasThreeParts) {
    const HttpRequest request = parsed("gEt /a%41?b=%42 HTTP/1.1");
    EXPECT_EQ(request.method, "gEt");
    EXPECT_EQ(request.url, "/a%41?b=%42");
    EXPECT_EQ(request.version, "HTTP/1.1");
    EXPECT_EQ(request.path, "/a%41");
    EXPECT_EQ(request.query, "b=B");
    EXPECT_TRUE(request.headers.empty());
    EXPECT_FALSE(request.hasBodyHandler);
}

TEST(HttpRequestTest, WithoutAVersionTheUrlIsKeptAndThePathStaysEmpty) {
    HttpRequest request(nullptr);
    EXPECT_FALSE(request.parseRequestLine("GET /x?y"));
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, "/x?y");
    EXPECT_EQ(request.version, "");
    EXPECT_EQ(request.path, "");
    EXPECT_EQ(request.query, "");
}

TEST(HttpRequestTest, TwoBlanksMakeTheUrlEmptyAndTheVersionTakesIt) {
    const HttpRequest request = parsed("GET  /x HTTP/1.1");
    EXPECT_EQ(request.url, "");
    EXPECT_EQ(request.version, "/x");
    EXPECT_EQ(request.path, "");
}

TEST(HttpRequestTest, AMethodAloneOrNothingIsNoRequestLine) {
    HttpRequest method(nullptr);
    EXPECT_FALSE(method.parseRequestLine("GET"));
    EXPECT_EQ(method.method, "GET");
    HttpRequest nothing(nullptr);
    EXPECT_FALSE(nothing.parseRequestLine(""));
    EXPECT_EQ(nothing.method, "");
}

TEST(HttpRequestTest, TheVersionMayBeEmpty) {
    const HttpRequest request = parsed("GET /x ");
    EXPECT_EQ(request.version, "");
    EXPECT_EQ(request.path, "/x");
}

TEST(HttpRequestTest, LineEndCharactersEndATokenLikeBlanks) {
    const HttpRequest request = parsed("GET\r/x\nHTTP/1.1\rrest");
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, "/x");
    EXPECT_EQ(request.version, "HTTP/1.1");
}

TEST(HttpRequestTest, ATabIsPartOfAToken) { EXPECT_EQ(parsed("GET\t/x /y z").method, "GET\t/x"); }

TEST(HttpRequestTest, TheFirstQuestionMarkSplitsTheUrl) {
    EXPECT_EQ(parsed("GET /a?b?c HTTP/1.1").path, "/a");
    EXPECT_EQ(parsed("GET /a?b?c HTTP/1.1").query, "b?c");
    EXPECT_EQ(parsed("GET /a? HTTP/1.1").query, "");
    EXPECT_EQ(parsed("GET ?b HTTP/1.1").path, "");
}

TEST(HttpRequestTest, WithoutAQuestionMarkNothingIsDecoded) { EXPECT_EQ(parsed("GET /%41+ HTTP/1.1").path, "/%41+"); }

TEST(HttpRequestTest, QueryIsPercentDecoded) {
    EXPECT_EQ(queryOf("%41%42"), "AB");
    EXPECT_EQ(queryOf("%4a%4A"), "JJ");
    EXPECT_EQ(queryOf("a+b"), "a+b");
    EXPECT_EQ(queryOf("%FF"), "\xFF");
}

TEST(HttpRequestTest, APercentSignNearTheEndStays) {
    EXPECT_EQ(queryOf("%4"), "%4");
    EXPECT_EQ(queryOf("%"), "%");
    EXPECT_EQ(queryOf("%%"), "%%");
    EXPECT_EQ(queryOf("%41%4"), "A%4");
}

TEST(HttpRequestTest, WhatIsNoDigitAddsNothing) {
    EXPECT_EQ(queryOf("%ZZ"), "\0"s);
    EXPECT_EQ(queryOf("%4G"), "\x40");
    EXPECT_EQ(queryOf("%G4"), "\x04");
    EXPECT_EQ(queryOf("a%ZZb"), "a\0b"s);
}

TEST(HttpRequestTest, ADecodedPercentSignIsDecodedAgain) {
    EXPECT_EQ(queryOf("%2541"), "A");
    EXPECT_EQ(queryOf("%252541"), "A");          // twice over
    EXPECT_EQ(queryOf("%254"), "%4");            // too near to the end by then
    EXPECT_EQ(queryOf("%25%25"), "\x02"s + "5"); // the second round takes "%%2"
    EXPECT_EQ(queryOf("%%41"), "\x04"s + "1");   // "%%4" comes first
}

TEST(HttpRequestTest, LongQueriesAreDecodedWhole) {
    std::string query;
    for (int i = 0; i < 1000000; ++i)
        query += "%41";
    EXPECT_EQ(queryOf(query), std::string(1000000, 'A'));
}

TEST(HttpRequestTest, HeaderNameRunsUpToTheColonAndTheValueToTheEnd) {
    HttpRequest request(nullptr);
    EXPECT_TRUE(request.parseHeaderLine("Host: \t a b: c  "));
    EXPECT_EQ(request.headers.at("Host"), "a b: c  ");
    EXPECT_TRUE(request.parseHeaderLine("X Y :z\rw"));
    EXPECT_EQ(request.headers.at("X Y "), "z");
}

TEST(HttpRequestTest, HeaderNamesAreCaseSensitive) {
    HttpRequest request(nullptr);
    request.parseHeaderLine("Host: a");
    request.parseHeaderLine("host: b");
    EXPECT_EQ(request.headers.size(), 2U);
    EXPECT_EQ(request.headers.at("Host"), "a");
    EXPECT_EQ(request.headers.at("host"), "b");
}

TEST(HttpRequestTest, ARepeatedNameKeepsTheLastValue) {
    HttpRequest request(nullptr);
    request.parseHeaderLine("Host: a");
    request.parseHeaderLine("Host: b");
    EXPECT_EQ(request.headers.size(), 1U);
    EXPECT_EQ(request.headers.at("Host"), "b");
    EXPECT_TRUE(request.parseHeaderLine("Host:"));
    EXPECT_EQ(request.headers.at("Host"), "");
}

TEST(HttpRequestTest, ALineWithoutAColonIsIgnored) {
    HttpRequest request(nullptr);
    EXPECT_FALSE(request.parseHeaderLine("no header"));
    EXPECT_FALSE(request.parseHeaderLine(""));
    EXPECT_TRUE(request.headers.empty());
}

TEST(HttpRequestTest, AColonAtTheEndGivesAnEmptyValue) {
    HttpRequest request(nullptr);
    EXPECT_TRUE(request.parseHeaderLine("Name:"));
    EXPECT_TRUE(request.parseHeaderLine("Blank: \t"));
    EXPECT_EQ(request.headers.at("Name"), "");
    EXPECT_EQ(request.headers.at("Blank"), "");
}

TEST(HttpRequestTest, ABareCrEndsTheNameLikeAColon) {
    HttpRequest request(nullptr);
    EXPECT_TRUE(request.parseHeaderLine("Name\r value"));
    EXPECT_EQ(request.headers.at("Name"), "value");
}

TEST(HttpRequestTest, ContentTypeIsMadeIfMissing) {
    HttpRequest request(nullptr);
    EXPECT_EQ(request.contentType(), "");
    EXPECT_EQ(request.headers.count("Content-Type"), 1U);
    request.contentType() = "image/png";
    EXPECT_EQ(request.headers.at("Content-Type"), "image/png");
}

TEST(HttpRequestTest, ContentLengthIsADecimalNumberOr0) {
    HttpRequest request(nullptr);
    EXPECT_EQ(request.contentLength(), 0U);
    EXPECT_TRUE(request.headers.empty());
    const auto lengthOf = [&](const std::string& value) {
        request.headers["Content-Length"] = value;
        return request.contentLength();
    };
    EXPECT_EQ(lengthOf("3"), 3U);
    EXPECT_EQ(lengthOf("007"), 7U);
    EXPECT_EQ(lengthOf("18446744073709551615"), 18446744073709551615U);
    EXPECT_EQ(lengthOf("18446744073709551616"), 0U);
    EXPECT_EQ(lengthOf("x"), 0U);
    EXPECT_EQ(lengthOf(""), 0U);
    EXPECT_EQ(lengthOf("0x10"), 0U);
    EXPECT_EQ(lengthOf("12abc"), 12U);
}

TEST(HttpRequestTest, NoBodyHandlerWithoutABody) {
    HttpRequest request(nullptr);
    request.setBodyHandler([](const char*, size_t) {});
    EXPECT_FALSE(request.hasBodyHandler);
}

} // namespace
