#pragma once

namespace Platform::Simulated {

/// The values that a control can take; `step` 0: all between the ends.
struct ControlGrid {
    double min;
    double max;
    double step;

    /// What becomes of a value that is set: it is brought into the range and goes to the nearest point of
    /// the grid there, which counts from `min`; half way to the larger one. Not for not-a-number.
    double nearestPoint(double value) const;
};

} // namespace Platform::Simulated
