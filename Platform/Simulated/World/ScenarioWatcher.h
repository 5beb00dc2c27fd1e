#pragma once

#include "Platform/Shared/FileDescriptor.h"
#include "Platform/Shared/WakeUp.h"

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace Platform::Simulated {

/// Hands a file's text over each time that the file has changed, be it written in place or replaced, on a
/// thread of its own. A change that cannot be taken over is passed by, with one line on standard error
/// unless the file is whole again a moment later. Where the system has no thread or no watch left, the text stays as it
/// was first, likewise with one line. One thread at a time.
class ScenarioWatcher {
public:
    /// Raises winrt::hresult_error for a text that cannot be taken over.
    using TakeOver = std::function<void(const std::string& text)>;

    /// Hands the text over for the first time; raises what that raises.
    ScenarioWatcher(std::filesystem::path file, TakeOver takeOver);
    ~ScenarioWatcher();
    ScenarioWatcher(const ScenarioWatcher&) = delete;
    ScenarioWatcher& operator=(const ScenarioWatcher&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    /// A file as it was found; without a text there was none that could be read.
    struct Version {
        std::optional<std::string> text;
        ino_t inode = 0;
        std::chrono::nanoseconds changed{0};

        bool operator==(const Version&) const = default;
    };

    Version look() const;
    void takeOver(const Version& version) const;
    void run();
    bool readEvents();
    void follow(bool isConfirmed);
    int pollTimeout() const;

    const std::filesystem::path _file;
    const TakeOver _takeOver;
    Shared::FileDescriptor _inotify;
    const Shared::WakeUp _stop;
    Version _last;                               // the one that was taken over, or passed by, last
    std::optional<Clock::time_point> _confirmAt; // when to look again at a file that is not in order
    std::thread _thread;                         // none where the file cannot be followed
};

} // namespace Platform::Simulated
