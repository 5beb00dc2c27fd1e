#include "Framework/CXX/System/CrashReporter/ShortRecord.h"

#include "Framework/CXX/System/CrashReporter/MemoryMap.h"
#include "Framework/CXX/System/CrashReporter/RawText.h"
#include "Framework/CXX/System/CrashReporter/Registers.h"

#include <limits.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cstdint>

namespace Halden::System {

namespace {

constexpr std::size_t searchedStackBytes = 256UL * 1024;
constexpr int mostAddresses = 200;

using Line = RawText<PATH_MAX + 100>;

const char* explain(HelperResult result) noexcept {
    switch (result) {
    case HelperResult::NotStarted:
        return "The crash helper could not be started";
    case HelperResult::TimedOut:
        return "The crash helper took too long and was ended";
    default:
        return "The crash helper failed";
    }
}

void writeAddress(int file, const MemoryMap& map, std::uint64_t address) noexcept {
    Line line;
    line.text("    ").hex(address, 16);
    if (const Mapping* mapping = map.find(address)) {
        line.text(" ").text(mapping->name.empty() ? "(no file)" : mapping->name);
        line.text("+").hex(address - mapping->begin + mapping->fileOffset);
    }
    writeAll(file, line.text("\n").view());
}

void writeRegisters(int file, const ucontext_t& context) noexcept {
    writeAll(file, "\nRegisters:\n");
    for (const Register& each : dwarfRegisters) {
        Line line;
        line.text("    ").text(each.name).text(" ").hex(registerValue(context, each), 16);
        writeAll(file, line.text("\n").view());
    }
}

/// Reads this very process by way of the kernel, which refuses where plain reading would crash.
std::size_t readSafely(std::uint64_t address, void* buffer, std::size_t size) noexcept {
    const iovec local{buffer, size};
    const iovec remote{std::bit_cast<void*>(address), size};
    const ssize_t count = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void writeStack(int file, const MemoryMap& map, const ucontext_t& context) noexcept {
    static std::array<std::uint64_t, 512> words; // a page
    writeAll(file, "\nWhere it happened, and values on the stack that may be return addresses (file+offset):\n");
    writeAddress(file, map, instructionPointer(context));
    const std::uint64_t begin = stackPointer(context) / sizeof(words[0]) * sizeof(words[0]);
    int found = 0;
    for (std::size_t offset = 0; offset < searchedStackBytes && found < mostAddresses; offset += sizeof(words)) {
        const std::size_t bytes = readSafely(begin + offset, words.data(), sizeof(words));
        for (std::size_t i = 0; i < bytes / sizeof(words[0]) && found < mostAddresses; ++i) {
            const Mapping* mapping = map.find(words[i]);
            if (mapping != nullptr && mapping->executable) {
                writeAddress(file, map, words[i]);
                ++found;
            }
        }
        if (bytes < sizeof(words))
            break; // the end of the stack
    }
}

} // namespace

void writeShortRecord(int file, HelperResult helperResult, const ucontext_t& context) noexcept {
    static MemoryMap map;
    map.readOwn();
    Line line;
    line.text("\n").text(explain(helperResult));
    line.text("; what follows was written by the crashing process itself, which can't tell names.\n");
    writeAll(file, line.view());
    writeStack(file, map, context);
    writeRegisters(file, context);
    writeAll(file, "\nMemory map:\n");
    writeAll(file, map.text());
}

} // namespace Halden::System
