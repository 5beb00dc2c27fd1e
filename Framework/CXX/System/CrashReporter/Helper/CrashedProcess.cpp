#include "Framework/CXX/System/CrashReporter/Helper/CrashedProcess.h"

#include "Framework/CXX/System/CrashReporter/Registers.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace Halden::System {

namespace {

constexpr int stoppedByCaller = 100; // none of the library's own results

using DwarfRegisters = std::array<Dwarf_Word, dwarfRegisters.size()>;

DwarfRegisters inDwarfOrder(const ucontext_t& context) {
    DwarfRegisters values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = registerValue(context, dwarfRegisters[i]);
    return values;
}

DwarfRegisters inDwarfOrder(const user_regs_struct& registers) {
    return {registers.rax, registers.rdx, registers.rcx, registers.rbx, registers.rsi, registers.rdi,
            registers.rbp, registers.rsp, registers.r8,  registers.r9,  registers.r10, registers.r11,
            registers.r12, registers.r13, registers.r14, registers.r15, registers.rip};
}

std::runtime_error moduleFailure() {
    const char* reason = dwfl_errmsg(-1);
    return std::runtime_error(std::string("The modules of the process are not known: ") +
                              (reason != nullptr ? reason : "no reason given"));
}

ucontext_t readContext(const ProcessMemory& memory, std::uint64_t address) {
    ucontext_t context{};
    // Only as far as the signal mask: the kernel's own frames end before the C library's structure does.
    if (!memory.read(address, &context, offsetof(ucontext_t, uc_sigmask))) {
        const std::error_code error(errno, std::generic_category());
        throw std::runtime_error("The memory of the process can't be read: " + error.message());
    }
    return context;
}

} // namespace

CrashedProcess::CrashedProcess(pid_t process, pid_t crashingThread, std::uint64_t contextAddress)
    : _process(process), _crashingThread(crashingThread), _memory(process),
      _context(readContext(_memory, contextAddress)), _others(process, crashingThread) {
    openModules();
    leaveBadJump();
}

void CrashedProcess::openModules() {
    static const Dwfl_Callbacks callbacks = {
        .find_elf = dwfl_linux_proc_find_elf,
        .find_debuginfo = dwfl_standard_find_debuginfo,
        .section_address = nullptr,
        .debuginfo_path = nullptr,
    };
    _dwfl.reset(dwfl_begin(&callbacks));
    if (!_dwfl || dwfl_linux_proc_report(_dwfl.get(), _process) != 0 ||
        dwfl_report_end(_dwfl.get(), nullptr, nullptr) != 0 ||
        !dwfl_attach_state(_dwfl.get(), nullptr, _process, &threadCallbacks(), this)) {
        throw moduleFailure();
    }
}

void CrashedProcess::leaveBadJump() {
    _walkFrom = _context;
    const std::uint64_t address = instructionPointer(_context);
    if (dwfl_addrmodule(_dwfl.get(), address) != nullptr)
        return;
    const auto caller = _memory.word(stackPointer(_context));
    if (caller && dwfl_addrmodule(_dwfl.get(), *caller) != nullptr) {
        _badJump = address;
        _walkFrom.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(*caller);
        _walkFrom.uc_mcontext.gregs[REG_RSP] += static_cast<greg_t>(sizeof(*caller));
    }
}

bool CrashedProcess::setInitialRegisters(Dwfl_Thread* thread) {
    const pid_t id = dwfl_thread_tid(thread);
    DwarfRegisters values{};
    if (id == _crashingThread) {
        values = inDwarfOrder(_walkFrom);
    } else {
        const auto state = otherThreads().find(id);
        if (state == otherThreads().end() || !state->second.registers)
            return false;
        values = inDwarfOrder(*state->second.registers);
    }
    return dwfl_thread_state_registers(thread, 0, values.size(), values.data());
}

const Dwfl_Thread_Callbacks& CrashedProcess::threadCallbacks() {
    static const Dwfl_Thread_Callbacks callbacks = {
        // Threads are asked for one by one; the library wants this operation to be there all the same.
        .next_thread = [](Dwfl*, void*, void**) -> pid_t { return 0; },
        .get_thread =
            [](Dwfl*, pid_t, void* self, void** threadArgument) {
                *threadArgument = self;
                return true;
            },
        .memory_read =
            [](Dwfl*, Dwarf_Addr address, Dwarf_Word* result, void* self) {
                const auto value = static_cast<CrashedProcess*>(self)->_memory.word(address);
                *result = value.value_or(0);
                return value.has_value();
            },
        .set_initial_registers =
            [](Dwfl_Thread* thread, void* self) {
                return static_cast<CrashedProcess*>(self)->setInitialRegisters(thread);
            },
        .detach = nullptr,
        .thread_detach = nullptr,
    };
    return callbacks;
}

std::string CrashedProcess::walkStack(pid_t thread, const OnFrame& onFrame) {
    const auto callback = [](Dwfl_Frame* frame, void* argument) -> int {
        Dwarf_Addr address = 0;
        bool isExact = false;
        if (!dwfl_frame_pc(frame, &address, &isExact))
            return DWARF_CB_ABORT;
        return (*static_cast<const OnFrame*>(argument))(address, isExact) ? DWARF_CB_OK : stoppedByCaller;
    };
    const int result = dwfl_getthread_frames(_dwfl.get(), thread, callback, const_cast<OnFrame*>(&onFrame));
    if (result == 0 || result == stoppedByCaller)
        return {};
    const char* reason = dwfl_errmsg(-1);
    return reason != nullptr ? reason : "no reason given";
}

} // namespace Halden::System
