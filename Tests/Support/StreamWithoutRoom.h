#pragma once

#include "Platform/Interface/RandomAccessStream.h"

#include <new>

/// Finds no memory for what is written.
class StreamWithoutRoom final : public Platform::IRandomAccessStream {
public:
    std::uint64_t Size() const override { return 0; }
    void Seek(std::uint64_t) override {}
    std::size_t Read(std::span<std::uint8_t>) override { return 0; }
    void Write(std::span<const std::uint8_t>) override { throw std::bad_alloc(); }
};
