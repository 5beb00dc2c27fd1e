#include "Tools/CameraHub/Terminal/Progress.h"

#include "Tools/CameraHub/Terminal/Terminal.h"
#include "Tools/Text/DurationText.h"
#include "Tools/Text/TerminalText.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace CommandLine {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds quietTime(300); // what ends sooner needs no telling
constexpr milliseconds interval(100);

constexpr auto eraseLine = "\r\x1b[K";

} // namespace

Progress::Progress(bool isWanted, std::string what) : _what(std::move(what)) {
    if (isWanted && terminalSize(STDERR_FILENO))
        _thread = std::jthread([this](const std::stop_token& stop) { show(stop); });
}

Progress::~Progress() {
    if (!_thread.joinable())
        return;
    _thread.request_stop();
    _thread.join();
}

void Progress::show(const std::stop_token& stop) {
    const auto start = std::chrono::steady_clock::now();
    std::unique_lock lock(_mutex);
    const auto endsWithin = [&](milliseconds time) {
        _ended.wait_for(lock, stop, time, [] { return false; });
        return stop.stop_requested();
    };
    if (endsWithin(quietTime))
        return;
    do {
        const auto time = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
        const std::string line = "waiting for " + _what + ": " + durationText(time);
        // One column stays free: a terminal may begin a new line behind the last.
        const int columns = std::max(terminalSize(STDERR_FILENO).value_or(TerminalSize()).columns - 1, 1);
        (void)std::fputs((eraseLine + shortened(line, columns)).c_str(), stderr);
    } while (!endsWithin(interval));
    (void)std::fputs(eraseLine, stderr);
}

} // namespace CommandLine
