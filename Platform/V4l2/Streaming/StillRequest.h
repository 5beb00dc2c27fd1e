#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/RandomAccessStream.h"
#include "Platform/V4l2/Streaming/Freshness.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace Platform::V4l2 {

/// A still that somebody waits for.
struct StillRequest {
    AsyncOperationSource<void> operation;
    RandomAccessStream stream;
    TimePoint asked;
};

/// The frame that a still is made of.
struct StillFrame {
    Imaging::FrameLayout layout;
    std::vector<std::uint8_t> bytes;
};

/// Takes a frame that has been found for these requests; returns at once.
using StillSink = std::function<void(std::vector<StillRequest>, StillFrame)>;

/// Ends a request with an error; returns at once.
using StillRefusal = std::function<void(const StillRequest&, const winrt::hresult_error&)>;

} // namespace Platform::V4l2
