#include "Services/LarkspurWindowsCameraHub/Listeners.h"
#include "Tests/Framework/CXX/Network/HttpFixture.h"
#include "Tests/Framework/CXX/Network/TestApplication.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <json/json.h>

#include <regex>

namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

const std::string notFoundImage = "HTTP/1.1 404 Image does not exist\r\nContent-Type: text/html\r\n"
                                  "Transfer-Encoding: chunked\r\n\r\n62\r\n"
                                  "<html><title>404 Image does not exist</title><body><h1>404 Image does not exist"
                                  "</h1></body></html>\r\n0\r\n\r\n";

/// The terminator that the route sends behind an error's own.
const std::string spareTerminator = "0\r\n\r\n";

/// The listeners on free ports, and simulated cameras.
class ImageRouteTest : public OneCamera {
protected:
    static void SetUpTestSuite() { _application = std::make_unique<TestApplication>(); }
    static void TearDownTestSuite() { _application.reset(); }

    ~ImageRouteTest() override {
        _rpc.reset();
        _web.reset();
        if (_listeners)
            _listeners->httpServer->closeClients();
        settleEventLoop(); // the connections use their servers until they have gone
    }

    void start(const std::string& scenario, std::size_t cameras = 1) {
        useScenario(scenario);
        _listeners = std::make_unique<Listeners>(0, 0, nullptr);
        _rpc = std::make_unique<TestConnection>(rpcPort());
        ASSERT_TRUE(turnUntil([&] { return call("camera:discover", "")["result"].size() == cameras; }));
    }

    Json::Value call(const std::string& method, const std::string& params) { return callOn(*_rpc, method, params); }

    static Json::Value callOn(TestConnection& connection, const std::string& method, const std::string& params) {
        const std::size_t before = connection.received().size();
        connection.send(message(method, params));
        EXPECT_TRUE(turnUntil(
            [&] { return connection.received().size() > before && connection.received().ends_with("\r\n\0"s); }));
        Json::Value reply;
        std::istringstream(connection.received().substr(before)) >> reply;
        return reply;
    }

    static std::string message(const std::string& method, const std::string& params) {
        return R"({"id":1,"method":")" + method + R"(","params":{)" + params + "}}" + "\0"s;
    }

    /// The image's id after a capture with that camera.
    std::string capture(const std::string& uid = "D") {
        const Json::Value reply = call("camera:capture", captureParams(uid));
        return reply["result"]["resid"].asString();
    }

    static std::string captureParams(const std::string& uid) { return R"("to":")" + uid + R"(","exposureInUs":50000)"; }

    /// Exactly what the HTTP server sends for that request line, provided that it then reads on.
    std::string get(const std::string& path, const std::string& method = "GET") {
        _web = std::make_unique<TestConnection>(webPort());
        _web->send(method + " " + path + " HTTP/1.1\r\n\r\nGET /end-of-test HTTP/1.1\r\n\r\n");
        EXPECT_TRUE(turnUntil([&] { return _web->received().ends_with(notFoundResponse); })) << _web->received();
        const std::string& received = _web->received();
        return received.substr(0, received.size() - std::min(received.size(), notFoundResponse.size()));
    }

    static std::string headOf(std::size_t size) {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\nContent-Type: image/png\r\n\r\n";
    }

    /// The file behind the head of a response with an image, which it checks; empty for any other.
    static std::string imageOf(const std::string& response) {
        const std::size_t headSize = response.find("\r\n\r\n") + 4;
        const std::string body = response.substr(std::min(response.size(), headSize));
        EXPECT_EQ(response.substr(0, headSize), headOf(body.size()));
        EXPECT_TRUE(body.starts_with("\x89PNG\r\n\x1A\n")) << "no PNG";
        return body;
    }

    quint16 rpcPort() const { return _listeners->rpcServer->serverPort(); }
    quint16 webPort() const { return _listeners->httpServer->serverPort(); }

private:
    inline static std::unique_ptr<TestApplication> _application;
    std::unique_ptr<Listeners> _listeners;
    std::unique_ptr<TestConnection> _rpc;
    std::unique_ptr<TestConnection> _web;
};

TEST_F(ImageRouteTest, AnImageComesWithItsLengthAndWithoutChunks) {
    start(oneCamera(olderExposure()));
    const std::string response = get("/res/" + capture());
    EXPECT_FALSE(imageOf(response).empty());
    EXPECT_EQ(response.find("chunked"), std::string::npos);
}

TEST_F(ImageRouteTest, TheSameRequestTwiceGivesTheSameReplyTwice) {
    start(oneCamera(olderExposure()));
    const std::string id = capture();
    const std::string first = get("/res/" + id);
    EXPECT_FALSE(imageOf(first).empty());
    EXPECT_EQ(get("/res/" + id), first);
}

TEST_F(ImageRouteTest, AQueryIsNoPartOfTheId) {
    start(oneCamera(olderExposure()));
    const std::string id = capture();
    EXPECT_FALSE(imageOf(get("/res/" + id + "?size=small")).empty());
}

TEST_F(ImageRouteTest, TheIdIsComparedAsSent) {
    start(oneCamera(olderExposure()));
    std::string id = capture();
    const std::size_t hyphen = id.find('-');
    EXPECT_EQ(get("/res/" + id.substr(0, hyphen) + "%2D" + id.substr(hyphen + 1)), notFoundImage + spareTerminator);
    EXPECT_EQ(get("/res//" + id), notFoundImage + spareTerminator);
}

TEST_F(ImageRouteTest, WithoutAnIdThereIsNoImageAndTheTerminatorComesTwice) {
    start(oneCamera(olderExposure()));
    capture();
    EXPECT_EQ(get("/res/"), notFoundImage + spareTerminator);
}

TEST_F(ImageRouteTest, AnUnknownIdIsNotFound) {
    start(R"("groups": [])", 0);
    EXPECT_EQ(get("/res/00000000-0000-0000-0000-000000000000"), notFoundImage + spareTerminator);
}

TEST_F(ImageRouteTest, ASecondCaptureReplacesTheImageAlsoOnAnotherCamera) {
    start(severalCameras({"D", "E"}, olderExposure()), 2);
    const std::string first = capture("D");
    const std::string second = capture("E");
    EXPECT_EQ(get("/res/" + first), notFoundImage + spareTerminator);
    EXPECT_FALSE(imageOf(get("/res/" + second)).empty());
}

TEST_F(ImageRouteTest, ACaptureThatThePlatformEndedWithAnErrorHasNoImage) {
    start(oneCamera(withMembers(olderExposure(), R"("capture": {"outcome": "error"})")));
    const std::string id = capture();
    EXPECT_EQ(id.size(), 36u);
    EXPECT_EQ(get("/res/" + id), notFoundImage + spareTerminator);
}

TEST_F(ImageRouteTest, AnotherPathNeverReachesTheRoute) {
    start(R"("groups": [])", 0);
    EXPECT_EQ(get("/other"), notFoundResponse);
    EXPECT_EQ(get("/res"), notFoundResponse);
    EXPECT_EQ(get("/RES/x"), notFoundResponse);
}

TEST_F(ImageRouteTest, AnyOtherMethodGetsNoAnswerAndHoldsItsConnection) {
    start(oneCamera(olderExposure()));
    const std::string id = capture();
    for (const std::string method : {"POST", "HEAD", "get", "GETS"}) {
        TestConnection connection(webPort());
        connection.send(method + " /res/" + id + " HTTP/1.1\r\n\r\nGET /res/" + id + " HTTP/1.1\r\n\r\n");
        // What another connection is answered, this one would have been answered long before.
        EXPECT_FALSE(imageOf(get("/res/" + id)).empty());
        EXPECT_EQ(connection.received(), "") << method;
        EXPECT_TRUE(connection.isConnected()) << method;
    }
}

TEST_F(ImageRouteTest, AnImageIsThereForEveryConnectionAndOutlivesTheOneThatTookIt) {
    start(oneCamera(olderExposure()));
    std::string id;
    {
        TestConnection taker(rpcPort());
        id = callOn(taker, "camera:capture", captureParams("D"))["result"]["resid"].asString();
    }
    EXPECT_TRUE(turnUntil([&] { return timesCalled("MediaCapture.Close") == 1; })) << "the camera closes";
    EXPECT_FALSE(imageOf(get("/res/" + id)).empty());
}

TEST_F(ImageRouteTest, AClientThatLeavesDuringItsCaptureGetsItDone) {
    start(oneCamera(olderExposure()));
    QTcpSocket leaving;
    leaving.connectToHost(QHostAddress(QHostAddress::LocalHost), rpcPort());
    ASSERT_TRUE(leaving.waitForConnected());
    leaving.write(message("camera:capture", captureParams("D")).c_str());
    leaving.putChar('\0');
    ASSERT_TRUE(leaving.waitForBytesWritten());
    leaving.close(); // before the event loop has turned
    EXPECT_TRUE(turnUntil([&] { return timesCalled("MediaCapture.Close") == 1; }));
    EXPECT_EQ(timesCalled("MediaCapture.CapturePhotoToStreamAsync"), 1u);
    const auto lines = journalTexts();
    EXPECT_NE(std::find(lines.begin(), lines.end(), "D: MediaCapture.CapturePhotoToStreamAsync ended"), lines.end());
    EXPECT_FALSE(capture().empty()) << "the service goes on";
}

} // namespace
