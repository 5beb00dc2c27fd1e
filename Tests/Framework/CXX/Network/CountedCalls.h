#pragma once

#include <map>
#include <string>

/// Counts the system calls that this process makes on one descriptor through recv, send, sendmsg, write, ioctl and
/// epoll_ctl, for a scope. One at a time; main thread.
class CountedCalls {
public:
    explicit CountedCalls(int descriptor);
    ~CountedCalls();
    CountedCalls(const CountedCalls&) = delete;
    CountedCalls& operator=(const CountedCalls&) = delete;

    /// By the names of the functions; those that were not called are missing.
    const std::map<std::string, int>& counts() const { return _counts; }

    static void count(const char* function, int descriptor);

private:
    int _descriptor;
    std::map<std::string, int> _counts;
};
