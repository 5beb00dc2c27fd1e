#pragma once

#include <ucontext.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Halden::System {

#if !defined(__x86_64__)
#error "Crash recording knows the registers of x86-64 only. Another processor needs its table here."
#endif

struct Register {
    const char* name;
    int index; ///< in uc_mcontext.gregs
};

/// In the order of the DWARF numbers 0 to 16, which unwinding relies on.
inline constexpr std::array<Register, 17> dwarfRegisters = {{
    {"rax", REG_RAX},
    {"rdx", REG_RDX},
    {"rcx", REG_RCX},
    {"rbx", REG_RBX},
    {"rsi", REG_RSI},
    {"rdi", REG_RDI},
    {"rbp", REG_RBP},
    {"rsp", REG_RSP},
    {"r8", REG_R8},
    {"r9", REG_R9},
    {"r10", REG_R10},
    {"r11", REG_R11},
    {"r12", REG_R12},
    {"r13", REG_R13},
    {"r14", REG_R14},
    {"r15", REG_R15},
    {"rip", REG_RIP},
}};
inline constexpr std::size_t dwarfStackPointer = 7;
inline constexpr std::size_t dwarfInstructionPointer = 16;

inline std::uint64_t registerValue(const ucontext_t& context, const Register& which) noexcept {
    return static_cast<std::uint64_t>(context.uc_mcontext.gregs[which.index]);
}

inline std::uint64_t stackPointer(const ucontext_t& context) noexcept {
    return registerValue(context, dwarfRegisters[dwarfStackPointer]);
}

inline std::uint64_t instructionPointer(const ucontext_t& context) noexcept {
    return registerValue(context, dwarfRegisters[dwarfInstructionPointer]);
}

} // namespace Halden::System
