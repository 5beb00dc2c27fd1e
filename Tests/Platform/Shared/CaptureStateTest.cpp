#include "Platform/Shared/CaptureState.h"

#include "Tests/Support/RaisedError.h"

using namespace Platform::Shared;
using enum CaptureState::Phase;

namespace {

std::string refusalUnlessNew(const CaptureState& state) {
    return raisedBy([&] { state.requireNew("Use", "cam"); });
}

std::string refusalUnlessInitialised(const CaptureState& state) {
    return raisedBy([&] { state.requireInitialised("Use", "cam"); });
}

TEST(CaptureStateTest, ANewCaptureCanOnlyBeInitialised) {
    const CaptureState state;
    EXPECT_EQ(refusalUnlessNew(state), "nothing raised");
    EXPECT_EQ(refusalUnlessInitialised(state), "8000000E Use on cam: the capture has not been initialised");
}

TEST(CaptureStateTest, AnInitialisedCaptureCannotBeInitialisedAgain) {
    CaptureState state;
    state.enter(Initialised);
    EXPECT_EQ(refusalUnlessInitialised(state), "nothing raised");
    EXPECT_EQ(refusalUnlessNew(state), "8000000E Use on cam: the capture has been initialised already");
}

TEST(CaptureStateTest, AClosedCaptureAllowsNothing) {
    CaptureState state;
    state.enter(Closed);
    EXPECT_EQ(refusalUnlessNew(state), "80000013 Use on cam: the capture is closed");
    EXPECT_EQ(refusalUnlessInitialised(state), "80000013 Use on cam: the capture is closed");
}

TEST(CaptureStateTest, AClosedCaptureTellsWhyItsCameraCouldNotBeMadeReady) {
    CaptureState state;
    state.madeReady(winrt::hresult_error(winrt::result::busy, u"open on cam: busy"));
    state.madeReady(winrt::hresult_error(winrt::result::illegalMethodCall, u"open on cam: not now"));
    state.enter(Closed);
    EXPECT_EQ(refusalUnlessInitialised(state), "80000013 Use on cam: the capture is closed: open on cam: busy");
    state.madeReady(std::nullopt);
    EXPECT_EQ(refusalUnlessInitialised(state), "80000013 Use on cam: the capture is closed");
}

} // namespace
