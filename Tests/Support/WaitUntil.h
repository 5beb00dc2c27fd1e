#pragma once

#include <chrono>
#include <thread>

/// True as soon as the condition holds; false when the limit has passed.
template <typename Condition>
bool waitUntil(const Condition& condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
