#include "Services/CameraAccess/Convergence.h"

#include "Framework/CXX/Common/Clock.h"

#include <chrono>

namespace {

/// The time is fixed: nothing asks whether the controls have settled.
constexpr std::chrono::milliseconds convergenceTime{2000};

} // namespace

void converge(bool exposure, bool focus, bool wb, const ConvergenceSteps& steps) {
    if (!exposure && !focus && !wb)
        return;
    steps.tell(std::string("Turning on a preview stream to converge: ") + (exposure ? "[exposure] " : "") +
               (focus ? "[focus] " : "") + (wb ? "[WB] " : "") + steps.camera);
    steps.tell("Turn auto settings on or off..");
    steps.autoExposure(exposure);
    steps.autoFocus(focus);
    steps.autoWhiteBalance(wb);

    steps.tell("Converging..");
    Halden::currentClock()->sleepFor(convergenceTime);

    steps.tell("Done... turn off auto settings for future captures..");
    if (exposure)
        steps.autoExposure(false);
    if (focus)
        steps.autoFocus(false);
    if (wb)
        steps.autoWhiteBalance(false);
}
