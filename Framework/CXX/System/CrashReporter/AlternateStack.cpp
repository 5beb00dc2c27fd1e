#include "Framework/CXX/System/CrashReporter/AlternateStack.h"

#include <sys/mman.h>
#include <unistd.h>

namespace Halden::System {

namespace {

// What the crash handler needs beyond the kernel's own frame; it keeps its buffers in static memory, but
// sanitizers make its frames many times larger.
constexpr std::size_t handlerNeeds = 128 * 1024;

std::size_t pageSize() noexcept { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

std::size_t stackSize() noexcept {
    const long kernelNeeds = sysconf(_SC_MINSIGSTKSZ); // grows with the processor's vector registers
    const std::size_t size = handlerNeeds + (kernelNeeds > 0 ? static_cast<std::size_t>(kernelNeeds) : 0);
    return (size + pageSize() - 1) / pageSize() * pageSize();
}

} // namespace

AlternateStack::AlternateStack() noexcept {
    if (sigaltstack(nullptr, &_previous) != 0 ||
        ((_previous.ss_flags & SS_DISABLE) == 0 && _previous.ss_size >= stackSize())) {
        return;
    }
    const std::size_t guard = pageSize();
    const std::size_t size = guard + stackSize();
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return;
    stack_t stack{};
    stack.ss_sp = static_cast<char*>(memory) + guard;
    stack.ss_size = size - guard;
    if (mprotect(memory, guard, PROT_NONE) != 0 || sigaltstack(&stack, nullptr) != 0) {
        munmap(memory, size);
        return;
    }
    _memory = memory;
    _size = size;
}

AlternateStack::~AlternateStack() {
    if (_memory == nullptr)
        return;
    stack_t current{};
    if (sigaltstack(nullptr, &current) == 0 && current.ss_sp == static_cast<char*>(_memory) + pageSize())
        sigaltstack(&_previous, nullptr);
    munmap(_memory, _size);
}

} // namespace Halden::System
