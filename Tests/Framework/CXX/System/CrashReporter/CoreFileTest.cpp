#include "Tests/Framework/CXX/System/CrashReporter/CrashRun.h"

#include <elfutils/libdwfl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>

namespace CrashTest {

namespace {

/// The names of all functions on all stacks of a core file.
std::multiset<std::string> functionsIn(const std::filesystem::path& core) {
    static const Dwfl_Callbacks callbacks = {dwfl_build_id_find_elf, dwfl_standard_find_debuginfo, nullptr, nullptr};
    Dwfl* dwfl = dwfl_begin(&callbacks);
    FILE* file = std::fopen(core.c_str(), "rb");
    elf_version(EV_CURRENT);
    Elf* elf = elf_begin(fileno(file), ELF_C_READ_MMAP, nullptr);
    std::multiset<std::string> names;
    EXPECT_GT(dwfl_core_file_report(dwfl, elf, nullptr), 0) << dwfl_errmsg(-1);
    EXPECT_EQ(dwfl_report_end(dwfl, nullptr, nullptr), 0);
    EXPECT_GT(dwfl_core_file_attach(dwfl, elf), 0) << dwfl_errmsg(-1);
    const auto onFrame = [](Dwfl_Frame* frame, void* argument) -> int {
        Dwarf_Addr address = 0;
        dwfl_frame_pc(frame, &address, nullptr);
        Dwfl_Module* module = dwfl_addrmodule(dwfl_thread_dwfl(dwfl_frame_thread(frame)), address - 1);
        const char* name = module != nullptr ? dwfl_module_addrname(module, address - 1) : nullptr;
        static_cast<std::multiset<std::string>*>(argument)->insert(name != nullptr ? name : "?");
        return DWARF_CB_OK;
    };
    const auto onThread = [](Dwfl_Thread* thread, void* argument) -> int {
        const auto pair = static_cast<std::pair<decltype(+onFrame), void*>*>(argument);
        dwfl_thread_getframes(thread, pair->first, pair->second);
        return DWARF_CB_OK;
    };
    std::pair<decltype(+onFrame), void*> frameCallback{+onFrame, &names};
    dwfl_getthreads(dwfl, onThread, &frameCallback);
    dwfl_end(dwfl);
    elf_end(elf);
    std::fclose(file);
    return names;
}

bool holds(const std::multiset<std::string>& names, const std::string& part) {
    return std::any_of(names.begin(), names.end(),
                       [&part](const std::string& name) { return name.find(part) != std::string::npos; });
}

} // namespace

TEST(CoreFileTest, IsWrittenOnlyIfAskedFor) {
    const ScratchFolder folder;
    runCrashProgram(folder, {"writeToNull", "main"});
    EXPECT_TRUE(folder.files(".core").empty());
}

TEST(CoreFileTest, HoldsTheStacksOfAllThreads) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "thread", "writeCoreFile=yes"});
    const auto cores = folder.files(".core");
    ASSERT_EQ(cores.size(), 1u) << run.record;
    EXPECT_EQ(cores.front().stem(), std::filesystem::path(run.recordName).stem());
    EXPECT_NE(run.record.find("\nCore file: " + cores.front().string() + "\n"), std::string::npos) << run.record;
    struct stat status{};
    stat(cores.front().c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u) << "it holds all the memory";
    const auto names = functionsIn(cores.front());
    EXPECT_TRUE(holds(names, "writeToNull"));
    EXPECT_TRUE(holds(names, "runInThread")) << "the main thread";
}

TEST(CoreFileTest, FailureIsToldInTheRecord) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "writeCoreFile=yes", "largestFile=100000"});
    EXPECT_NE(run.record.find("\nCore file: none: File too large\n"), std::string::npos) << run.record;
    EXPECT_TRUE(folder.files(".core").empty());
    EXPECT_TRUE(folder.files(".part").empty());
}

} // namespace CrashTest
