#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/RandomAccessStream.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Platform {

/// Reads a stream from its position on, in two steps: load, then take. One thread at a time.
class DataReader {
public:
    /// Shares the stream, which is not null and has its position where the reading is to begin.
    explicit DataReader(RandomAccessStream stream) : _stream(std::move(stream)) {}

    /// Loads as many bytes, fewer at the stream's end, behind those that have been loaded; the number that was loaded
    /// now. The operation has ended when it is returned. Fails with the stream's error, and has then loaded nothing.
    IAsyncOperation<std::uint32_t> LoadAsync(std::uint32_t count) {
        AsyncOperationSource<std::uint32_t> source;
        const std::size_t before = _loaded.size();
        try {
            _loaded.resize(before + count);
            const std::size_t loaded = _stream->Read(std::span(_loaded).subspan(before));
            _loaded.resize(before + loaded);
            source.complete(static_cast<std::uint32_t>(loaded));
        } catch (const winrt::hresult_error& error) {
            _loaded.resize(before);
            source.fail(error);
        }
        return source.operation();
    }

    /// Fills all of `bytes` with those that have been loaded and not been taken yet. Raises outOfBounds, and takes
    /// nothing, if they are fewer.
    void ReadBytes(std::span<std::uint8_t> bytes) {
        if (bytes.size() > _loaded.size() - _taken)
            throw winrt::hresult_out_of_bounds(u"More bytes were asked for than have been loaded.");
        std::copy_n(_loaded.begin() + static_cast<std::ptrdiff_t>(_taken), bytes.size(), bytes.begin());
        _taken += bytes.size();
    }

private:
    RandomAccessStream _stream;
    std::vector<std::uint8_t> _loaded;
    std::size_t _taken = 0;
};

} // namespace Platform
