#pragma once

#include "Platform/Imaging/Png/BlockQueue.h"

#include <functional>
#include <thread>
#include <utility>

namespace Platform::Imaging::Png {

/// A thread for the one work that it is given. Outlives who gives it.
class ThreadBeside {
public:
    RunBeside run() {
        return [this](std::function<void()> work) { _thread = std::jthread(std::move(work)); };
    }
    /// Until the work has ended.
    void join() { _thread.join(); }
    bool isUsed() const { return _thread.joinable(); }

private:
    std::jthread _thread;
};

} // namespace Platform::Imaging::Png
