#include "Framework/CXX/System/CrashReporter/Helper/CoreNotes.h"

#include <elf.h>
#include <sys/procfs.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

namespace Halden::System {

namespace {

constexpr std::uint64_t pageSize = 4096;
constexpr char noteOwner[] = "CORE"; // what the kernel's own core files say

template <typename Value> void append(std::string& bytes, const Value& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

void pad(std::string& bytes) { bytes.resize((bytes.size() + 3) / 4 * 4); }

void appendNote(std::string& notes, Elf64_Word type, const std::string& content) {
    append(notes, Elf64_Nhdr{sizeof(noteOwner), static_cast<Elf64_Word>(content.size()), type});
    notes.append(noteOwner, sizeof(noteOwner));
    pad(notes);
    notes += content;
    pad(notes);
}

user_regs_struct registersOf(const ucontext_t& context) {
    const auto& from = context.uc_mcontext.gregs;
    const auto get = [&from](int index) { return static_cast<unsigned long long>(from[index]); };
    user_regs_struct to{};
    to.r8 = get(REG_R8);
    to.r9 = get(REG_R9);
    to.r10 = get(REG_R10);
    to.r11 = get(REG_R11);
    to.r12 = get(REG_R12);
    to.r13 = get(REG_R13);
    to.r14 = get(REG_R14);
    to.r15 = get(REG_R15);
    to.rdi = get(REG_RDI);
    to.rsi = get(REG_RSI);
    to.rbp = get(REG_RBP);
    to.rbx = get(REG_RBX);
    to.rdx = get(REG_RDX);
    to.rax = get(REG_RAX);
    to.orig_rax = ~0ULL; // not in a system call
    to.rcx = get(REG_RCX);
    to.rsp = get(REG_RSP);
    to.rip = get(REG_RIP);
    to.eflags = get(REG_EFL);
    to.cs = get(REG_CSGSFS) & 0xFFFF;
    to.ss = (get(REG_CSGSFS) >> 48) & 0xFFFF;
    return to;
}

void appendThread(std::string& notes, pid_t thread, int signal, const user_regs_struct& registers) {
    elf_prstatus status{};
    status.pr_pid = thread;
    status.pr_cursig = static_cast<short>(signal);
    status.pr_info.si_signo = signal;
    static_assert(sizeof(status.pr_reg) == sizeof(registers));
    std::memcpy(&status.pr_reg, &registers, sizeof(registers));
    std::string content;
    append(content, status);
    appendNote(notes, NT_PRSTATUS, content);
}

void appendProcess(std::string& notes, const CrashedProcess& process) {
    elf_prpsinfo info{};
    info.pr_sname = 'R';
    info.pr_pid = process.process();
    const std::string name = threadName(process.process(), process.process());
    name.copy(info.pr_fname, sizeof(info.pr_fname) - 1);
    name.copy(info.pr_psargs, sizeof(info.pr_psargs) - 1);
    std::string content;
    append(content, info);
    appendNote(notes, NT_PRPSINFO, content);
}

void appendAuxiliaryVector(std::string& notes, pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/auxv", std::ios::binary);
    appendNote(notes, NT_AUXV, {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
}

void appendFiles(std::string& notes, const std::vector<ProcessMapping>& maps) {
    std::uint64_t count = 0;
    std::string places;
    std::string names;
    for (const ProcessMapping& mapping : maps) {
        if (mapping.inode != 0) {
            ++count;
            append(places, mapping.begin);
            append(places, mapping.end);
            append(places, mapping.fileOffset / pageSize);
            names += mapping.name + '\0';
        }
    }
    std::string content;
    append(content, count);
    append(content, pageSize);
    appendNote(notes, NT_FILE, content + places + names);
}

} // namespace

std::string coreNotes(const CrashedProcess& process, int signal, const std::vector<ProcessMapping>& maps) {
    std::string notes;
    appendThread(notes, process.crashingThread(), signal, registersOf(process.context()));
    appendProcess(notes, process);
    appendAuxiliaryVector(notes, process.process());
    appendFiles(notes, maps);
    for (const auto& [thread, state] : process.otherThreads())
        if (state.registers)
            appendThread(notes, thread, 0, *state.registers);
    return notes;
}

} // namespace Halden::System
