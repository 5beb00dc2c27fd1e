#include "Services/LarkspurWindowsCameraHub/PavoCameraServer.h"

#include "Tests/Framework/CXX/Network/TestApplication.h"
#include "Tests/Framework/CXX/Network/TestConnection.h"
#include "Tests/Support/SimulatedHub.h"

#include <memory>
#include <string>

namespace {

using namespace std::string_literals;

const std::string discover = "{\"method\":\"camera:discover\"}\0"s;
const std::string noCameras = "{\"id\":null,\"jsonrpc\":\"2.0\",\"result\":[]}\n\r\n\0"s;

/// The listener on a free port, without cameras.
class PavoCameraServerTest : public SimulatedHub {
protected:
    static void SetUpTestSuite() { _application = std::make_unique<TestApplication>(); }
    static void TearDownTestSuite() { _application.reset(); }

    ~PavoCameraServerTest() override {
        settleEventLoop(); // the connections tell the listener when they go
    }

    std::unique_ptr<PavoCameraServer> server = std::make_unique<PavoCameraServer>(0, nullptr);

private:
    inline static std::unique_ptr<TestApplication> _application;
};

TEST_F(PavoCameraServerTest, ANotificationReachesEveryConnectionBetweenItsReplies) {
    TestConnection one(server->serverPort());
    TestConnection two(server->serverPort());
    for (TestConnection* connection : {&one, &two}) {
        connection->send(discover);
        connection->receive(noCameras.size());
    }
    server->incomingNotification("note");
    for (TestConnection* connection : {&one, &two}) {
        connection->send(discover);
        const std::string all = noCameras + "note\r\n\0"s + noCameras;
        EXPECT_EQ(connection->receive(all.size()), all);
    }
}

TEST_F(PavoCameraServerTest, AConnectionIsAnsweredUntilItsEndAlsoWithoutTheListener) {
    TestConnection connection(server->serverPort());
    connection.send(discover);
    connection.receive(noCameras.size());
    server.reset();
    connection.send(discover);
    EXPECT_EQ(connection.receive(2 * noCameras.size()), noCameras + noCameras);
}

} // namespace
