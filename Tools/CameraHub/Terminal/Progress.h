#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

namespace CommandLine {

/// While it lives, the last line of the terminal at standard error says what is being waited for and for how long; it
/// is gone afterwards. Where standard error is no terminal, nothing is ever written. Nobody else writes to the terminal
/// meanwhile.
class Progress {
public:
    /// "waiting for " goes before the text, which is printable.
    Progress(bool isWanted, std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void show(const std::stop_token& stop);

    std::string _what;
    std::mutex _mutex;
    std::condition_variable_any _ended;
    std::jthread _thread; // the last member: it uses the others
};

} // namespace CommandLine
