#include "Tools/CameraHub/Terminal/Interruption.h"

#include <poll.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <limits>

namespace CommandLine {
namespace {

volatile std::sig_atomic_t signalThatCame = 0;
const CameraHub::Cancellation* cancellationOfSignals = nullptr;

extern "C" void onSignal(int number) {
    signalThatCame = number;
    cancellationOfSignals->cancel();
}

} // namespace

Interruption::Interruption() {
    // Never destroyed: a signal may come at any time.
    cancellationOfSignals = new CameraHub::Cancellation(_cancellation);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    // What is being written goes on; what waits does so by poll(), which ends nevertheless.
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGALRM})
        sigaction(number, &action, nullptr);
}

int Interruption::signal() { return signalThatCame; }

void Interruption::limitTo(std::chrono::milliseconds time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    itimerval timer = {};
    timer.it_value.tv_sec = seconds.count();
    timer.it_value.tv_usec = std::chrono::microseconds(time - seconds).count();
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void Interruption::check() {
    if (signal() != 0)
        throw Interrupted();
}

void Interruption::waitUntil(std::chrono::steady_clock::time_point end) const {
    using std::chrono::milliseconds;
    pollfd cancelled{_cancellation.descriptor(), POLLIN, 0};
    for (;;) {
        check();
        const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
        if (left <= milliseconds(0))
            return;
        (void)poll(&cancelled, 1,
                   static_cast<int>(std::min<milliseconds::rep>(left.count(), std::numeric_limits<int>::max())));
    }
}

} // namespace CommandLine
