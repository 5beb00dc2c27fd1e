#pragma once

#include <functional>
#include <string>

/// How those who let a camera's automatics converge switch them, and whom they tell.
struct ConvergenceSteps {
    // Each switches one automatic on or off and tells the outcome.
    std::function<void(bool on)> autoExposure;
    std::function<void(bool on)> autoFocus;
    std::function<void(bool on)> autoWhiteBalance;

    std::function<void(const std::string& line)> tell;
    std::string camera; ///< ends the first line: which camera it is; may be empty
};

/// Switches the three automatics as told, gives them a fixed 2 s, then switches those off that were on; the order is
/// exposure, focus, white balance. Three false flags do nothing at all. Blocks; what a step raises leaves the rest
/// undone.
void converge(bool exposure, bool focus, bool wb, const ConvergenceSteps& steps);
