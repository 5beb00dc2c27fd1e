#pragma once

#include "Platform/Imaging/Png/BlockTools.h"
#include "Platform/Imaging/Png/RunBeside.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace Platform::Imaging::Png {

/// The type of a PNG file's chunks of coded rows.
constexpr std::string_view dataType = "IDAT";

/// Blocks that one thread fills and takes, coded by that thread and, if there is one, another beside it, whichever has
/// time. Blocks do not depend on who codes them. One thread at a time.
class BlockQueue {
public:
    /// `room` is the most bytes of a block. The other thread gets work until the queue goes.
    BlockQueue(std::size_t room, const RunBeside& runBeside,
               std::unique_ptr<BlockTools> tools = std::make_unique<BlockTools>());
    ~BlockQueue() { close(); }
    BlockQueue(const BlockQueue&) = delete;
    BlockQueue& operator=(const BlockQueue&) = delete;

    bool isEmpty() const { return _put == _taken; }
    bool isFull() const;

    /// The one to be filled next, while the queue is not full; put() takes it then.
    Block& next();
    void put();

    /// The oldest block, coded, while the queue is not empty; take() makes room for another then. Throws what coding it
    /// has thrown: std::bad_alloc.
    const Block& oldest();
    void take();

    /// Waits while the other thread codes a block, and hands the tools out, the first time. Nothing else is called
    /// then.
    std::unique_ptr<BlockTools> close();

private:
    struct State;

    std::shared_ptr<State> _state; // the other thread may come when the queue has gone
    std::size_t _put = 0;
    std::size_t _taken = 0;
};

} // namespace Platform::Imaging::Png
