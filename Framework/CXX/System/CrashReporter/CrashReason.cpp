#include "Framework/CXX/System/CrashReporter/CrashReason.h"

#include "Framework/CXX/System/CrashReporter/Registers.h"

#include <unistd.h>

#include <cstdint>

namespace Halden::System {

namespace {

// A fault this near to the stack pointer comes from a push, a call or a local variable.
constexpr std::uint64_t nearStackPointer = 64 * 1024;

const char* signalName(int number) noexcept {
    switch (number) {
    case SIGSEGV:
        return "Segmentation fault (SIGSEGV)";
    case SIGBUS:
        return "Bus error (SIGBUS)";
    case SIGFPE:
        return "Arithmetic fault (SIGFPE)";
    case SIGILL:
        return "Illegal instruction (SIGILL)";
    case SIGABRT:
        return "Abort (SIGABRT)";
    default:
        return "Signal";
    }
}

const char* arithmeticFault(int code) noexcept {
    switch (code) {
    case FPE_INTDIV:
        return "integer division by zero";
    case FPE_INTOVF:
        return "integer overflow";
    case FPE_FLTDIV:
        return "floating-point division by zero";
    case FPE_FLTOVF:
        return "floating-point overflow";
    case FPE_FLTUND:
        return "floating-point underflow";
    case FPE_FLTRES:
        return "inexact floating-point result";
    case FPE_FLTINV:
        return "invalid floating-point operation";
    default:
        return "of a kind that the processor does not tell";
    }
}

bool isStackOverflow(const siginfo_t& info, const ucontext_t& context) noexcept {
    const auto address = reinterpret_cast<std::uint64_t>(info.si_addr);
    const std::uint64_t stack = stackPointer(context);
    return info.si_signo == SIGSEGV && (info.si_code == SEGV_MAPERR || info.si_code == SEGV_ACCERR) &&
           address + nearStackPointer > stack && address < stack + nearStackPointer;
}

void addFault(ReasonText& text, const siginfo_t& info, const ucontext_t& context) noexcept {
    const auto address = reinterpret_cast<std::uint64_t>(info.si_addr);
    if (isStackOverflow(info, context)) {
        text.text("stack overflow, at address ").hex(address);
    } else if (info.si_signo == SIGSEGV && info.si_code == SEGV_MAPERR) {
        text.text("no memory at address ").hex(address);
    } else if (info.si_signo == SIGSEGV && info.si_code == SEGV_ACCERR) {
        text.text("access not allowed to the memory at address ").hex(address);
    } else if (info.si_signo == SIGSEGV && info.si_code == SI_KERNEL) {
        text.text("access to an address that can't exist");
    } else if (info.si_signo == SIGBUS && info.si_code == BUS_ADRERR) {
        text.text("nothing behind the mapped address ")
            .hex(address)
            .text(": the mapped file is too short or can't be read");
    } else if (info.si_signo == SIGFPE) {
        text.text(arithmeticFault(info.si_code)).text(", at address ").hex(address);
    } else {
        text.text("at address ").hex(address);
    }
}

void addSignal(ReasonText& text, const CrashReason& reason) noexcept {
    const siginfo_t& info = *reason.signal;
    text.text(signalName(info.si_signo)).text(": ");
    const bool sent = info.si_code == SI_USER || info.si_code == SI_TKILL || info.si_code == SI_QUEUE;
    if (info.si_code == SI_TIMER)
        text.text("it took too long");
    else if (!sent)
        addFault(text, info, *reason.context);
    else if (info.si_pid != getpid())
        text.text("sent by process ").decimal(info.si_pid);
    else if (info.si_signo == SIGABRT)
        text.text("abort() was called");
    else
        text.text("sent by the process itself");
}

void addException(ReasonText& text, const ExceptionText& exception) noexcept {
    if (exception.type.empty()) {
        text.text("std::terminate was called without an exception");
        return;
    }
    text.text("Uncaught exception of type ").text(exception.type.view());
    if (!exception.text.empty())
        text.text(": ").text(exception.text.view());
}

/// The text of an exception may hold anything; the record's lines must stay lines.
const ReasonText& inOneLine(const ReasonText& text) noexcept {
    static ReasonText line;
    line.clear();
    for (const char unit : text.view()) {
        const bool control = static_cast<unsigned char>(unit) < 0x20 || unit == 0x7F;
        line.text({control ? " " : &unit, 1});
    }
    return line;
}

} // namespace

const ReasonText& describeReason(const CrashReason& reason) noexcept {
    static ReasonText text; // an alternate stack is small
    text.clear();
    if (reason.exception != nullptr)
        addException(text, *reason.exception);
    if (reason.signal != nullptr) {
        text.text(reason.exception != nullptr ? "; while it was being described: " : "");
        addSignal(text, reason);
    }
    return inOneLine(text);
}

} // namespace Halden::System
