#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Platform {

/// Bytes in a row that stay where and as they are for as long as somebody holds them.
struct SharedSpan {
    std::shared_ptr<const std::uint8_t> data; ///< the first of them; null without any
    std::size_t size = 0;                     ///< how many they are
};

/// Bytes with a position, which begins at 0. One thread at a time. Whoever hands a stream to an asynchronous operation
/// leaves it alone until that has ended. All but Seek may raise what the system reports; streams in memory raise
/// nothing.
class IRandomAccessStream {
public:
    virtual ~IRandomAccessStream() = default;

    /// Length in bytes.
    virtual std::uint64_t Size() const = 0;

    /// In bytes from the beginning; may be behind the end, where reading gives nothing and writing fills what is
    /// between with zeros.
    virtual void Seek(std::uint64_t position) = 0;

    /// Reads at the position and moves it on; the number of bytes read, fewer at the end only.
    virtual std::size_t Read(std::span<std::uint8_t> bytes) = 0;

    /// As Read, of `count` bytes, which a stream in memory need not copy for that.
    virtual SharedSpan ReadShared(std::size_t count) {
        const auto bytes = std::make_shared<std::vector<std::uint8_t>>(count);
        const std::size_t size = Read(*bytes);
        return {{bytes, bytes->data()}, size};
    }

    /// Writes all at the position, moves it on, and makes the stream longer where needed.
    virtual void Write(std::span<const std::uint8_t> bytes) = 0;

    /// As Write, which a stream in memory need not copy them for.
    virtual void WriteOwned(std::vector<std::uint8_t> bytes) { Write(bytes); }
};
using RandomAccessStream = std::shared_ptr<IRandomAccessStream>;

} // namespace Platform
