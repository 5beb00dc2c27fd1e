#include "Platform/Shared/CaptureState.h"

#include "Tests/Support/RaisedError.h"

using namespace Platform::Shared;
using enum CaptureState::Phase;

namespace {

std::string refusal(const CaptureState& state, CaptureState::Phase wanted) {
    return raisedBy([&] { state.require(wanted, "Use", "cam"); });
}

TEST(CaptureState, ANewCaptureCanOnlyBeInitialised) {
    const CaptureState state;
    EXPECT_EQ(refusal(state, New), "nothing raised");
    EXPECT_EQ(refusal(state, Initialised), "8000000E Use on cam: the capture has not been initialised");
}

TEST(CaptureState, AnInitialisedCaptureCannotBeInitialisedAgain) {
    CaptureState state;
    state.enter(Initialised);
    EXPECT_EQ(refusal(state, Initialised), "nothing raised");
    EXPECT_EQ(refusal(state, New), "8000000E Use on cam: the capture has been initialised already");
}

TEST(CaptureState, AClosedCaptureAllowsNothing) {
    CaptureState state;
    state.enter(Closed);
    EXPECT_EQ(refusal(state, New), "80000013 Use on cam: the capture is closed");
    EXPECT_EQ(refusal(state, Initialised), "80000013 Use on cam: the capture is closed");
}

} // namespace
