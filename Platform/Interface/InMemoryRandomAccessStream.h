#pragma once

#include "Platform/Interface/RandomAccessStream.h"

#include <algorithm>
#include <vector>

namespace Platform {

/// A growing stream in memory, empty at first. One thread at a time. Raises nothing; memory that runs out is a
/// std::bad_alloc, as everywhere.
class InMemoryRandomAccessStream final : public IRandomAccessStream {
public:
    /// The furthest byte written, zeros in gaps included.
    std::uint64_t Size() const override { return _bytes.size(); }
    void Seek(std::uint64_t position) override { _position = position; }

    std::size_t Read(std::span<std::uint8_t> bytes) override {
        if (_position >= _bytes.size())
            return 0;
        const std::size_t count = std::min<std::size_t>(bytes.size(), _bytes.size() - _position);
        std::copy_n(_bytes.begin() + static_cast<std::ptrdiff_t>(_position), count, bytes.begin());
        _position += count;
        return count;
    }

    void Write(std::span<const std::uint8_t> bytes) override {
        if (_position + bytes.size() > _bytes.size())
            _bytes.resize(_position + bytes.size());
        std::copy(bytes.begin(), bytes.end(), _bytes.begin() + static_cast<std::ptrdiff_t>(_position));
        _position += bytes.size();
    }

private:
    std::vector<std::uint8_t> _bytes;
    std::uint64_t _position = 0;
};

} // namespace Platform
