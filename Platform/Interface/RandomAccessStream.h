#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Platform {

/// Bytes with a position. Not to be used by two threads at once: whoever hands a stream to an
/// asynchronous operation leaves it alone until that has ended. Writing and reading may raise.
class IRandomAccessStream {
public:
    virtual ~IRandomAccessStream() = default;

    /// Length in bytes.
    virtual std::uint64_t Size() const = 0;
    virtual void Seek(std::uint64_t position) = 0;

    /// Reads at the position and moves it on; the number of bytes read, fewer at the end.
    virtual std::size_t Read(std::span<std::uint8_t> bytes) = 0;
    /// Writes at the position, moves it on, and makes the stream longer where needed.
    virtual void Write(std::span<const std::uint8_t> bytes) = 0;
};
using RandomAccessStream = std::shared_ptr<IRandomAccessStream>;

} // namespace Platform
