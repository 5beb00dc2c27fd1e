#pragma once

#include <chrono>

namespace Platform::Simulated {

/// The exposure of a camera over time, in log2 of seconds. While it is automatic it moves evenly to the
/// neutral exposure. One thread at a time.
class ExposureInForce {
public:
    using Clock = std::chrono::steady_clock;

    /// How long automatic exposure takes to arrive; less than the second that is promised.
    static constexpr std::chrono::milliseconds movingTime{800};

    /// Sets the exposure; while automatic, the movement begins anew from there.
    void set(double exponent);

    /// Switches automatic exposure; off holds what is reached.
    void automatic(bool on, double neutral);

    bool isAutomatic() const { return _automatic; }
    double now() const;

private:
    double _from = 0.0;
    double _neutral = 0.0;
    bool _automatic = false;
    Clock::time_point _since;
};

} // namespace Platform::Simulated
