#pragma once

#include <chrono>
#include <thread>

/// For whatever a test waits for: it ends a hang, and is far beyond what a step takes on a busy machine under a
/// sanitizer.
constexpr std::chrono::seconds patience(60);

/// True as soon as the condition holds; false when the patience is over.
template <typename Condition> bool waitUntil(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
