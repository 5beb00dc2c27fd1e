#pragma once

namespace Halden::System {

/// While it stands, the calling thread gets SIGABRT once it has hung for that long, whatever it hangs in. Neither
/// allocates nor locks.
class HangAlarm {
public:
    explicit HangAlarm(long limitInMs) noexcept;
    ~HangAlarm();
    HangAlarm(const HangAlarm&) = delete;
    HangAlarm& operator=(const HangAlarm&) = delete;

private:
    int _timer = -1; ///< the kernel's number; -1 if it gave none
};

} // namespace Halden::System
