#include "Tests/Client/FakeHub.h"

#include <gtest/gtest.h>

#include <string>

using namespace CameraHub;
using namespace std::string_literals;

namespace {

class ReplyTest : public testing::Test {
protected:
    /// What the call throws when that comes.
    template <typename Error, typename Call> Error thrownBy(const std::string& bytes, Call call) {
        _hub.messages.answer(bytes);
        try {
            call(_client);
        } catch (const Error& error) {
            return error;
        }
        throw std::runtime_error("nothing was thrown");
    }

    void isUsableStill(int nextId) {
        _hub.messages.answer(FakeHub::result(R"("2.9")", nextId));
        EXPECT_TRUE(_client.isConnected());
        EXPECT_EQ(_client.version(), "2.9");
    }

    FakeHub _hub;
    CameraHubClient _client = _hub.connect();
};

void askVersion(CameraHubClient& client) { client.version(); }
void discover(CameraHubClient& client) { client.discover(); }
void capture(CameraHubClient& client) { client.capture({"desk"}); }
void redirect(CameraHubClient& client) { client.redirectDiagnostics("/Diagnostics"); }

TEST_F(ReplyTest, CodeAndMessageAtTheTopAreARejectedMessage) {
    const auto error = thrownBy<MessageRejected>(
        FakeHub::reply(R"({"code":-32700,"jsonrpc":"2.0","message":"Parse Error"})"), askVersion);
    EXPECT_EQ(error.code(), -32700);
    EXPECT_STREQ(error.what(), "Parse Error");
    isUsableStill(2);
}

TEST_F(ReplyTest, AnErrorIsAFailedMethod) {
    const auto error = thrownBy<MethodFailed>(
        FakeHub::reply(
            R"_({"error":{"message":"captureImage failed: Lost\r\nagain\u001b(5)"},"id":1,"jsonrpc":"2.0"})_"),
        capture);
    EXPECT_STREQ(error.what(), "captureImage failed: Lost  again (5)");
    isUsableStill(2);
}

TEST_F(ReplyTest, CodeAndMessageInTheResultAreARefusedCapture) {
    int id = 0;
    for (const int code :
         {CaptureRefused::noCameraNamed, CaptureRefused::cameraNotConnected, CaptureRefused::noImage}) {
        const auto error = thrownBy<CaptureRefused>(
            FakeHub::result(R"({"code":)" + std::to_string(code) + R"(,"message":"Why"})", ++id), capture);
        EXPECT_EQ(error.code(), code);
        EXPECT_STREQ(error.what(), "Why");
    }
    isUsableStill(4);
}

/// What no hub sends, and what is called when it comes.
struct Undocumented {
    const char* what;
    std::string bytes;
    void (*call)(CameraHubClient&);
};

void PrintTo(const Undocumented& sample, std::ostream* out) { *out << sample.what; }

class UndocumentedReplyTest : public testing::TestWithParam<Undocumented> {};

TEST_P(UndocumentedReplyTest, IsAProtocolErrorAndCostsTheConnection) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.messages.answer(GetParam().bytes);
    ASSERT_THROW(GetParam().call(client), ProtocolError);
    EXPECT_FALSE(client.isConnected());
    EXPECT_THROW(client.version(), NotConnected);
}

Undocumented message(const char* what, const std::string& text) { return {what, FakeHub::reply(text), askVersion}; }

INSTANTIATE_TEST_SUITE_P(
    Messages, UndocumentedReplyTest,
    testing::Values(message("no JSON", "hello"), message("empty", ""), message("another value at the top", "[]"),
                    message("something behind", R"({"id":1,"jsonrpc":"2.0","result":"2.9"} x)"),
                    message("a comment", R"({"id":1,"jsonrpc":"2.0","result":"2.9"} // x)"),
                    message("no UTF-8", "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":\"\xFF\"}"),
                    message("nested too deeply", std::string(100'000, '[')),
                    message("no jsonrpc", R"({"id":1,"result":"2.9"})"),
                    message("another jsonrpc", R"({"id":1,"jsonrpc":"1.0","result":"2.9"})"),
                    message("no id", R"({"jsonrpc":"2.0","result":"2.9"})"),
                    message("another id", R"({"id":2,"jsonrpc":"2.0","result":"2.9"})"),
                    message("an id with a fraction", R"({"id":1.0,"jsonrpc":"2.0","result":"2.9"})"),
                    message("a text for id", R"({"id":"1","jsonrpc":"2.0","result":"2.9"})"),
                    message("neither error nor result", R"({"id":1,"jsonrpc":"2.0"})"),
                    message("error and result", R"({"error":{"message":"a"},"id":1,"jsonrpc":"2.0","result":"2.9"})"),
                    message("an error without message", R"({"error":{},"id":1,"jsonrpc":"2.0"})"),
                    message("an error that is a text", R"({"error":"a","id":1,"jsonrpc":"2.0"})"),
                    message("a rejection without message", R"({"code":-32700,"jsonrpc":"2.0"})"),
                    message("a rejection with a text for code", R"({"code":"1","jsonrpc":"2.0","message":"a"})"),
                    message("a rejection beyond 32 bits", R"({"code":2147483648,"jsonrpc":"2.0","message":"a"})"),
                    Undocumented{"no end within 16 MiB", std::string(17 * 1024 * 1024, ' '), askVersion}));

Undocumented result(const char* what, void (*call)(CameraHubClient&), const std::string& value) {
    return {what, FakeHub::result(value), call};
}

/// A list of one camera, one of whose members is another.
Undocumented camera(const char* what, const std::string& member, const std::string& instead) {
    std::string entry =
        R"({"exposureMaxValueInUs":1000000,"exposureMinValueInUs":122,"make":"","model":"","resolutionX":1280,)"
        R"("resolutionY":720,"uid":"desk"})";
    entry.replace(entry.find(member), member.size(), instead);
    return result(what, discover, "[" + entry + "]");
}

INSTANTIATE_TEST_SUITE_P(
    Results, UndocumentedReplyTest,
    testing::Values(
        result("a version that is a number", askVersion, "2.9"), result("a list that is an object", discover, "{}"),
        result("a camera that is a text", discover, R"(["desk"])"), camera("no uid", R"("uid")", R"("id")"),
        camera("a number for uid", R"("desk")", "7"), camera("a number for make", R"("make":"")", R"("make":1)"),
        camera("null for model", R"("model":"")", R"("model":null)"), camera("a text for a width", "1280", R"("1280")"),
        camera("a fraction in a height", "720", "720.5"), camera("a width beyond 32 bits", "1280", "2147483648"),
        camera("an exposure beyond 64 bits", "1000000", "99999999999999999999"),
        camera("an exposure below 32 bits", "122", "-2147483649"),
        result("a capture that is a text", capture, R"("done")"),
        result("a capture without image", capture, R"({"exposureInUs":15625})"),
        result("a capture without exposure", capture, R"({"resid":"0c2a6b5e-7f3d-4c1a-9a55-52c1d0e4b7f6"})"),
        result("a capture with a text for exposure", capture,
               R"({"exposureInUs":"1","resid":"0c2a6b5e-7f3d-4c1a-9a55-52c1d0e4b7f6"})"),
        result("an image id that is none", capture, R"({"exposureInUs":15625,"resid":"0c2a\r\nHost: elsewhere"})"),
        result("a refusal with an unknown code", capture, R"({"code":4,"message":"a"})"),
        result("a refusal with no code", capture, R"({"code":0,"message":"a"})"),
        result("a refusal without message", capture, R"({"code":1})"),
        result("a redirection that is a text", redirect, R"("0")"),
        result("a redirection that is another number", redirect, "1"),
        result("a redirection that is false", redirect, "false")));

TEST_F(ReplyTest, WhatNobodyAskedForSpoilsTheNextReply) {
    _hub.messages.answer(FakeHub::result(R"("2.9")") + FakeHub::result(R"("2.8")"));
    EXPECT_EQ(_client.version(), "2.9");
    _hub.messages.answer(FakeHub::result(R"("2.9")", 2));
    EXPECT_THROW(_client.version(), ProtocolError);
}

} // namespace
