#include "Framework/CXX/Network/SendQueue.h"

#include <algorithm>
#include <utility>

namespace {

/// A text that is longer gets no more behind it, so that the memory of one that is sent slowly comes free in between.
constexpr std::size_t fullText = 65536;

/// Bytes behind a text: most are followed by a short end.
constexpr std::size_t roomForAnEnd = 16;

} // namespace

std::string_view SendQueue::Segment::rest() const {
    const std::string_view all =
        shared ? std::string_view(reinterpret_cast<const char*>(shared->data()), shared->size()) : text;
    return all.substr(taken);
}

void SendQueue::append(std::string_view text) {
    if (text.empty())
        return;
    if (segments.empty() || segments.back().shared || segments.back().text.size() >= fullText)
        segments.emplace_back().text.reserve(text.size() + roomForAnEnd);
    segments.back().text += text;
    total += text.size();
}

void SendQueue::append(SharedBytes shared) {
    if (shared->empty())
        return;
    total += shared->size();
    segments.push_back({{}, std::move(shared)});
}

std::size_t SendQueue::front(std::span<iovec> parts, std::size_t limit) const {
    std::size_t count = 0;
    for (const Segment& segment : segments) {
        if (count == parts.size() || limit == 0)
            break;
        const std::string_view bytes = segment.rest().substr(0, limit);
        parts[count++] = {const_cast<char*>(bytes.data()), bytes.size()}; // which sending does not change
        limit -= bytes.size();
    }
    return count;
}

void SendQueue::take(std::size_t count) {
    total -= count;
    while (count > 0) {
        Segment& first = segments.front();
        const std::size_t here = std::min(count, first.rest().size());
        first.taken += here;
        count -= here;
        if (first.rest().empty())
            segments.pop_front();
    }
}
