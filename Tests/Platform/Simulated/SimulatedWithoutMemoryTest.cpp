#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/FailingLargeAllocations.h"
#include "Tests/Support/RaisedError.h"
#include "Tests/Support/StreamWithoutRoom.h"

using namespace Platform;

namespace {

class SimulatedWithoutMemoryTest : public SimulatedFixture {
protected:
    /// What a still of 32x24 comes to where so many bytes are too many, and then one with memory.
    void expectStillToFail(std::size_t size) {
        start(cameraScenario());
        const auto capture = open();
        {
            const FailingLargeAllocations failing(size);
            const auto stream = std::make_shared<InMemoryRandomAccessStream>();
            EXPECT_EQ(raisedBy([&] { blockingWait(takeStill(capture, stream)); }),
                      "8007000E MediaCapture.CapturePhotoToStreamAsync on D: Cannot allocate memory");
        }
        EXPECT_EQ(still(capture).width, 32U);
    }
};

TEST_F(SimulatedWithoutMemoryTest, AStillWithoutRoomForItsPixelsFails) { expectStillToFail(32 * 24 * 3); }

TEST_F(SimulatedWithoutMemoryTest, AStillWithoutRoomForItsFileFails) { expectStillToFail(1000); }

TEST_F(SimulatedWithoutMemoryTest, AStillThatCannotBeWrittenFails) {
    start(cameraScenario());
    const auto capture = open();
    EXPECT_EQ(raisedBy([&] { blockingWait(takeStill(capture, std::make_shared<StreamWithoutRoom>())); }),
              "8007000E MediaCapture.CapturePhotoToStreamAsync on D: Cannot allocate memory");
    EXPECT_EQ(still(capture).width, 32U);
}

} // namespace
