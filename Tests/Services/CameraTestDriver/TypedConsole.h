#pragma once

#include "Services/CameraTestDriver/Console.h"

#include <sstream>
#include <string>

/// Thrown out of a console that has been written full: what ends a driver that repeats itself for ever.
struct ConsoleFull {};

/// A console on which everything has been typed beforehand, and which takes a limited number of bytes.
class TypedConsole {
public:
    static constexpr std::size_t defaultLimit = 1 << 20;

    explicit TypedConsole(const std::string& typed = {}, std::size_t limit = defaultLimit);

    operator Console&() { return _console; }
    Console* operator->() { return &_console; }

    /// What has been written so far; never more than the limit.
    std::string text() const { return _buffer.text(); }
    int flushes() const { return _buffer.flushes(); }

private:
    class Buffer final : public std::streambuf {
    public:
        explicit Buffer(std::size_t limit) : _limit(limit) {}
        const std::string& text() const { return _text; }
        int flushes() const { return _flushes; }

    protected:
        int_type overflow(int_type byte) override;
        int sync() override;

    private:
        const std::size_t _limit;
        std::string _text;
        int _flushes = 0;
    };

    std::istringstream _input;
    Buffer _buffer;
    std::ostream _output;
    Console _console;
};
