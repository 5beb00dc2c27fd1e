#include "Platform/Imaging/Png/BlockQueue.h"

#include <libdeflate.h>

#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace Platform::Imaging::Png {
namespace {

// With one thread a block stays in its cache. With two, enough that neither has to wait for the other: who fills the
// blocks codes about a third of them.
constexpr std::size_t blocksAlone = 1;
constexpr std::size_t blocksForTwo = 4;

void codeBlock(Block& block, BlockCoder& coder) {
    coder.code({block.bytes.data(), block.size}, block.place, block.coded);
    const std::span<const std::uint8_t> coded = block.coded.bytes();
    block.checksum =
        libdeflate_crc32(libdeflate_crc32(0, dataType.data(), dataType.size()), coded.data(), coded.size());
}

} // namespace

struct BlockQueue::State {
    struct Entry {
        Block* block = nullptr;
        bool isCoded = false;
        std::exception_ptr error;
    };

    State(std::size_t room, std::size_t blocks, std::unique_ptr<BlockTools> kept)
        : tools(std::move(kept)), entries(blocks) {
        tools->prepare(blocks, room);
        for (std::size_t i = 0; i < blocks; ++i)
            entries[i].block = &tools->blocks[i];
    }

    Entry& at(std::size_t number) { return entries[number % entries.size()]; }

    /// Codes the next block that has been put; the mutex is free meanwhile.
    void codeNext(std::unique_lock<std::mutex>& lock, BlockCoder& coder) {
        Entry& entry = at(begun++);
        lock.unlock();
        std::exception_ptr error;
        try {
            codeBlock(*entry.block, coder);
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        entry.error = error;
        entry.isCoded = true;
        changed.notify_all();
    }

    /// The other thread's part.
    void help() try {
        std::unique_lock lock(mutex);
        if (!isClosed && !tools->otherCoder)
            tools->otherCoder.emplace();
        while (!isClosed) {
            if (begun == put) {
                changed.wait(lock);
            } else {
                isHelping = true;
                codeNext(lock, *tools->otherCoder);
                isHelping = false;
            }
        }
    } catch (const std::bad_alloc&) { // then the first one codes all
    }

    std::unique_ptr<BlockTools> tools;
    std::vector<Entry> entries; // a block's number is that of its place in the file, its entry the rest of a division
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t put = 0;
    std::size_t begun = 0;
    bool isHelping = false;
    bool isClosed = false;
};

BlockQueue::BlockQueue(std::size_t room, const RunBeside& runBeside, std::unique_ptr<BlockTools> tools)
    : _state(std::make_shared<State>(room, runBeside ? blocksForTwo : blocksAlone, std::move(tools))) {
    if (runBeside)
        runBeside([state = _state] { state->help(); });
}

std::unique_ptr<BlockTools> BlockQueue::close() {
    std::unique_lock lock(_state->mutex);
    _state->isClosed = true;
    _state->changed.notify_all();
    _state->changed.wait(lock, [this] { return !_state->isHelping; });
    return std::move(_state->tools);
}

bool BlockQueue::isFull() const { return _put - _taken == _state->entries.size(); }

Block& BlockQueue::next() { return *_state->at(_put).block; }

void BlockQueue::put() {
    const std::lock_guard lock(_state->mutex);
    _state->at(_put).isCoded = false;
    _state->put = ++_put;
    _state->changed.notify_all();
}

const Block& BlockQueue::oldest() {
    std::unique_lock lock(_state->mutex);
    State::Entry& entry = _state->at(_taken);
    while (!entry.isCoded)
        if (_state->begun < _state->put)
            _state->codeNext(lock, _state->tools->coder);
        else
            _state->changed.wait(lock);
    if (entry.error)
        std::rethrow_exception(entry.error);
    return *entry.block;
}

void BlockQueue::take() {
    Block& block = *_state->at(_taken++).block;
    block.size = 0;
    block.place = {};
}

} // namespace Platform::Imaging::Png
