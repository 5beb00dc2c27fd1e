#pragma once

#include "Framework/CXX/Network/SharedBytes.h"

#include <sys/uio.h>

#include <cstddef>
#include <list>
#include <span>
#include <string>
#include <string_view>

/// What is still to be sent on a connection, in order: texts, which are copied, and bytes that are too many for that
/// and are shared. What has been sent is let go of, text in pieces of at least 64 KB. Main thread.
class SendQueue {
public:
    bool isEmpty() const { return segments.empty(); }
    std::size_t size() const { return total; } ///< bytes

    void append(std::string_view text);
    void append(SharedBytes shared); ///< not null

    /// Fills parts with the bytes at the front, up to a limit, for a system call that takes them together; returns how
    /// many parts that took. They are valid until the queue changes.
    std::size_t front(std::span<iovec> parts, std::size_t limit) const;

    /// No more than there are.
    void take(std::size_t count);

private:
    struct Segment {
        std::string text;
        SharedBytes shared; ///< in place of the text, if not null
        std::size_t taken = 0;

        std::string_view rest() const;
    };

    std::list<Segment> segments; ///< none is without a rest
    std::size_t total = 0;
};
