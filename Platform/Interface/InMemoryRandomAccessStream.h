#pragma once

#include "Platform/Interface/RandomAccessStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace Platform {

/// A growing stream in memory, empty at first. What has been read from it shared is copied before it changes. One
/// thread at a time. Raises nothing; memory that runs out is a std::bad_alloc, as everywhere.
class InMemoryRandomAccessStream final : public IRandomAccessStream {
public:
    /// The furthest byte written, zeros in gaps included.
    std::uint64_t Size() const override { return _bytes->size(); }
    void Seek(std::uint64_t position) override { _position = position; }

    std::size_t Read(std::span<std::uint8_t> bytes) override {
        const std::size_t count = available(bytes.size());
        if (count == 0)
            return 0;
        std::copy_n(_bytes->data() + _position, count, bytes.begin());
        _position += count;
        return count;
    }

    SharedSpan ReadShared(std::size_t count) override {
        const std::size_t size = available(count);
        if (size == 0)
            return {};
        SharedSpan bytes{{_bytes, _bytes->data() + _position}, size};
        _position += size;
        return bytes;
    }

    void Write(std::span<const std::uint8_t> bytes) override {
        if (_bytes.use_count() > 1)
            _bytes = std::make_shared<std::vector<std::uint8_t>>(*_bytes);
        if (_position + bytes.size() > _bytes->size())
            _bytes->resize(_position + bytes.size());
        std::copy(bytes.begin(), bytes.end(), _bytes->begin() + static_cast<std::ptrdiff_t>(_position));
        _position += bytes.size();
    }

    void WriteOwned(std::vector<std::uint8_t> bytes) override {
        if (_position > 0 || bytes.size() < _bytes->size())
            return Write(bytes);
        _position = bytes.size();
        _bytes = std::make_shared<std::vector<std::uint8_t>>(std::move(bytes));
    }

private:
    /// How many of so many bytes there are from the position on.
    std::size_t available(std::size_t count) const {
        return _position < _bytes->size() ? std::min<std::size_t>(count, _bytes->size() - _position) : 0;
    }

    std::shared_ptr<std::vector<std::uint8_t>> _bytes = std::make_shared<std::vector<std::uint8_t>>();
    std::uint64_t _position = 0;
};

} // namespace Platform
