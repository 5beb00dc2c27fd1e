#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"
#include "Tests/Support/RaisedError.h"

#include <future>
#include <thread>

using namespace Platform;

namespace {

struct Camera final : SimulatedFixture {
    using SimulatedFixture::file;
    using SimulatedFixture::open;
    using SimulatedFixture::platform;
    using SimulatedFixture::start;
    void TestBody() override {}

    /// Holds every thread that the platform has until the promise is kept; no other can be made.
    void takeAllThreads(const std::shared_future<void>& released) {
        ASSERT_TRUE(letThreadStartsFail());
        for (;;) {
            const auto operation = platform->FindAllAsync();
            if (operation.Status() == AsyncStatus::Error)
                return;
            operation.Completed([released, own = std::this_thread::get_id()](const auto&...) {
                if (std::this_thread::get_id() != own) // otherwise it had ended before
                    released.wait();
            });
        }
    }
};

/// In a process of its own, on a camera with that fault of the stopping.
void expectToStopWithoutAThread(const std::string& fault, const std::string& outcome) {
    const int result = runInChild([&] {
        Camera camera;
        camera.start(cameraScenario(R"({"faults": {"MediaFrameReader.StopAsync": )" + fault + "}}"));
        const auto capture = camera.open();
        const auto reader = blockingWait(capture->CreateFrameReaderAsync(capture->FrameSources().begin()->second));
        blockingWait(reader->StartAsync());
        std::promise<void> release;
        camera.takeAllThreads(release.get_future().share());
        EXPECT_EQ(raisedBy([&] { blockingWait(reader->StopAsync()); }), outcome);
        EXPECT_EQ(capture->CameraStreamState() == CameraStreamState::Streaming, outcome != "nothing raised");
        release.set_value();
        capture->Close();
    });
    EXPECT_EQ(result, 0);
}

TEST(SimulatedWithoutThreadsTest, AReaderStops) { expectToStopWithoutAThread(R"({"fails": false})", "nothing raised"); }

TEST(SimulatedWithoutThreadsTest, AReaderThatTakesItsTimeStops) {
    expectToStopWithoutAThread(R"({"fails": false, "delayMs": 50})", "nothing raised");
}

TEST(SimulatedWithoutThreadsTest, AReaderFailsToStopForItsOwnFaultOnly) {
    expectToStopWithoutAThread(R"({"code": -2147467259, "message": "stuck"})", "80004005 stuck");
}

} // namespace
