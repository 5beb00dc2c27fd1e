#include "Platform/Imaging/Png/BlockTools.h"

#include <mutex>
#include <utility>

namespace Platform::Imaging::Png {
namespace {

constexpr std::size_t mostKept = 1024 * 1024; // bytes of a block; those of usual pictures take a third of that

struct Shelf {
    std::mutex mutex;
    std::unique_ptr<BlockTools> tools;
};

/// Stays for threads that still work when the process ends.
Shelf& shelf() {
    static Shelf& shelf = *new Shelf;
    return shelf;
}

bool isWorthKeeping(const BlockTools& tools) {
    return tools.blocks.empty() || tools.blocks.front().bytes.size() <= mostKept;
}

} // namespace

void BlockTools::prepare(std::size_t count, std::size_t room) {
    if (blocks.size() < count)
        blocks.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        Block& block = blocks[i];
        if (block.bytes.size() < room + BlockCoder::slack)
            block.bytes.resize(room + BlockCoder::slack);
        block.size = 0;
        block.place = {};
    }
}

std::unique_ptr<BlockTools> takeTools() {
    {
        const std::lock_guard lock(shelf().mutex);
        if (shelf().tools)
            return std::move(shelf().tools);
    }
    return std::make_unique<BlockTools>();
}

void keepTools(std::unique_ptr<BlockTools> tools) {
    if (!isWorthKeeping(*tools))
        return;
    const std::lock_guard lock(shelf().mutex);
    if (!shelf().tools)
        shelf().tools = std::move(tools);
}

} // namespace Platform::Imaging::Png
