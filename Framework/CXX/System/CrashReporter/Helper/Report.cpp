#include "Framework/CXX/System/CrashReporter/Helper/Report.h"

#include "Framework/CXX/System/CrashReporter/Helper/AbortMessage.h"
#include "Framework/CXX/System/CrashReporter/Helper/CodeNames.h"
#include "Framework/CXX/System/CrashReporter/Registers.h"

#include <cinttypes>
#include <deque>
#include <string>

namespace Halden::System {

namespace {

// Of a stack that has overflowed, both ends are of interest.
constexpr std::size_t innermostFrames = 100;
constexpr std::size_t outermostFrames = 30;
// More than any stack of the usual 8 MiB holds: damaged frames can lead in a circle.
constexpr std::size_t mostFrames = 600'000;

struct Frame {
    std::size_t number;
    std::uint64_t address;
    bool isExact;
};

void writeFrame(std::FILE* file, Dwfl* dwfl, const Frame& frame) {
    // A return address may already lie in the next line, or the next function.
    const std::uint64_t inCall = frame.address - (frame.isExact ? 0 : 1);
    const std::string module = modulePlace(dwfl, frame.address);
    const std::vector<CodePlace> places = codePlaces(dwfl, inCall);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const CodePlace& place = places[i];
        std::fprintf(file, "  #%-3zu 0x%016" PRIx64 " %s", frame.number, frame.address,
                     place.function.empty() ? "(unknown)" : place.function.c_str());
        if (!place.source.empty())
            std::fprintf(file, " at %s", place.source.c_str());
        const bool inlined = i + 1 < places.size();
        std::fprintf(file, " (%s%s)\n", module.empty() ? "no module" : module.c_str(), inlined ? ", inlined" : "");
    }
}

void writeStack(std::FILE* file, CrashedProcess& process, pid_t thread) {
    std::size_t count = 0;
    std::deque<Frame> outermost;
    const auto onFrame = [&](std::uint64_t address, bool isExact) {
        const Frame frame{count++, address, isExact};
        if (frame.number < innermostFrames) {
            writeFrame(file, process.dwfl(), frame);
            return true;
        }
        outermost.push_back(frame);
        if (outermost.size() > outermostFrames)
            outermost.pop_front();
        return count < mostFrames;
    };
    const std::string problem = process.walkStack(thread, onFrame);
    if (count > innermostFrames + outermost.size())
        std::fprintf(file, "  ... %zu frames ...\n", count - innermostFrames - outermost.size());
    for (const Frame& frame : outermost)
        writeFrame(file, process.dwfl(), frame);
    if (!problem.empty())
        std::fprintf(file, "  (the stack could not be followed further: %s)\n", problem.c_str());
    std::fflush(file);
}

void writeAbortMessage(std::FILE* file, CrashedProcess& process) {
    const std::string message = abortMessage(process.dwfl(), process.memory());
    if (!message.empty())
        std::fprintf(file, "\nThe C library said: %s\n", message.c_str());
}

void writeCrashingThread(std::FILE* file, CrashedProcess& process) {
    const pid_t thread = process.crashingThread();
    std::fprintf(file, "\nThread %d \"%s\", which crashed:\n", thread, threadName(process.process(), thread).c_str());
    if (process.badJump()) {
        std::fprintf(file, "  (a jump to 0x%" PRIx64 ", where no code is; what follows is the caller)\n",
                     *process.badJump());
    }
    writeStack(file, process, thread);
}

void writeOtherThreads(std::FILE* file, CrashedProcess& process) {
    for (const auto& [thread, state] : process.otherThreads()) {
        std::fprintf(file, "\nThread %d \"%s\":\n", thread, state.name.c_str());
        if (state.registers)
            writeStack(file, process, thread);
        else
            std::fprintf(file, "  (no stack: %s)\n", state.problem.c_str());
    }
}

void writeRegisters(std::FILE* file, const CrashedProcess& process) {
    std::fprintf(file, "\nRegisters of thread %d:\n", process.crashingThread());
    for (const Register& each : dwarfRegisters)
        std::fprintf(file, "  %-4s 0x%016" PRIx64 "\n", each.name, registerValue(process.context(), each));
    std::fflush(file);
}

std::string buildId(Dwfl_Module* module) {
    const unsigned char* bits = nullptr;
    GElf_Addr address = 0;
    const int length = dwfl_module_build_id(module, &bits, &address);
    std::string text;
    for (int i = 0; i < length; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", bits[i]);
        text += digits;
    }
    return text.empty() ? "none" : text;
}

void writeModules(std::FILE* file, const CrashedProcess& process) {
    std::fprintf(file, "\nModules (addresses, build id, file):\n");
    const auto callback = [](Dwfl_Module* module, void**, const char* name, Dwarf_Addr start, void* argument) -> int {
        GElf_Addr bias = 0;
        if (dwfl_module_getelf(module, &bias) == nullptr)
            return DWARF_CB_OK; // a mapped file of data
        Dwarf_Addr end = 0;
        dwfl_module_info(module, nullptr, nullptr, &end, nullptr, nullptr, nullptr, nullptr);
        std::fprintf(static_cast<std::FILE*>(argument), "  0x%016" PRIx64 "-0x%016" PRIx64 " %s %s\n", start, end,
                     buildId(module).c_str(), name);
        return DWARF_CB_OK;
    };
    dwfl_getmodules(process.dwfl(), callback, file, 0);
    std::fflush(file);
}

} // namespace

void writeReport(CrashedProcess& process, std::FILE* file) {
    writeAbortMessage(file, process);
    writeCrashingThread(file, process);
    writeOtherThreads(file, process);
    writeRegisters(file, process);
    writeModules(file, process);
}

} // namespace Halden::System
