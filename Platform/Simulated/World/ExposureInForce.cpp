#include "Platform/Simulated/World/ExposureInForce.h"

#include <algorithm>
#include <cmath>

namespace Platform::Simulated {

void ExposureInForce::set(double exponent) {
    _from = exponent;
    _since = Clock::now();
}

void ExposureInForce::automatic(bool on, double neutral) {
    if (on == _automatic && neutral == _neutral)
        return;
    set(now());
    _automatic = on;
    _neutral = neutral;
}

double ExposureInForce::now() const {
    if (!_automatic)
        return _from;
    const std::chrono::duration<double> passed = Clock::now() - _since;
    const double progress = std::min(1.0, passed / movingTime);
    if (progress >= 1.0 || !std::isfinite(_from))
        return _neutral;
    return _from + (_neutral - _from) * progress;
}

} // namespace Platform::Simulated
