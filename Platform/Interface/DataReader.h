#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/RandomAccessStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
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
        source.endWith([&] {
            SharedSpan bytes = _stream->ReadShared(count);
            _left += bytes.size;
            _loaded.push_back(std::move(bytes));
            return static_cast<std::uint32_t>(_loaded.back().size);
        });
        return source.operation();
    }

    /// Fills all of `bytes` with those that have been loaded and not been taken yet. Raises outOfBounds, and takes
    /// nothing, if they are fewer.
    void ReadBytes(std::span<std::uint8_t> bytes) {
        requireLoaded(bytes.size());
        takePieces(bytes.size(), [&bytes](std::span<const std::uint8_t> piece) {
            std::ranges::copy(piece, bytes.begin());
            bytes = bytes.subspan(piece.size());
        });
    }

    /// The same for a vector of that many bytes, which need not be cleared first: for a large still, that takes as long
    /// as half of the copy.
    std::vector<std::uint8_t> ReadBytes(std::size_t count) {
        requireLoaded(count);
        std::vector<std::uint8_t> bytes;
        bytes.reserve(count);
        takePieces(count, [&bytes](std::span<const std::uint8_t> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        });
        return bytes;
    }

private:
    void requireLoaded(std::size_t count) const {
        if (count > _left)
            throw winrt::hresult_out_of_bounds(u"More bytes were asked for than have been loaded.");
    }

    template <typename Take>
    void takePieces(std::size_t count, const Take& take) {
        _left -= count;
        while (count > 0) {
            const SharedSpan& first = _loaded.front();
            const std::size_t size = std::min(count, first.size - _takenOfFirst);
            take(std::span(first.data.get() + _takenOfFirst, size));
            count -= size;
            _takenOfFirst += size;
            if (_takenOfFirst == first.size) {
                _loaded.pop_front();
                _takenOfFirst = 0;
            }
        }
    }

    RandomAccessStream _stream;
    std::deque<SharedSpan> _loaded;
    std::size_t _takenOfFirst = 0; // bytes of the first piece
    std::size_t _left = 0;         // bytes that have been loaded and not been taken
};

} // namespace Platform
