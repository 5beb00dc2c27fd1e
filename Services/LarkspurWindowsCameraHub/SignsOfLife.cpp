#include "Services/LarkspurWindowsCameraHub/SignsOfLife.h"

#include "Framework/CXX/System/ServiceNotification.h"
#include "Services/LarkspurWindowsCameraHub/Listeners.h"

#include <algorithm>

namespace {

using std::chrono::milliseconds;

bool bothListen(const Listeners& listeners) {
    return listeners.rpcServer && listeners.rpcServer->isListening() && listeners.httpServer &&
           listeners.httpServer->isListening();
}

} // namespace

SignsOfLife::SignsOfLife(const Listeners& listeners) {
    if (!bothListen(listeners))
        return;
    Halden::System::notifyReady();
    const auto limit = Halden::System::watchdogTime();
    if (limit.count() == 0)
        return;
    QObject::connect(&timer, &QTimer::timeout, Halden::System::notifyAlive);
    timer.start(intervalFor(limit));
}

milliseconds SignsOfLife::intervalFor(std::chrono::microseconds limit) {
    constexpr milliseconds atLeast(1);
    constexpr milliseconds atMost = std::chrono::hours(24); // far below what a timer can have
    // Not half of the limit, as is usual: a capture that begins just before a sign was due may then take only half of
    // it.
    return std::clamp(std::chrono::duration_cast<milliseconds>(limit / 20), atLeast, atMost);
}
