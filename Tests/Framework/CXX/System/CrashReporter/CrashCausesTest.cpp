// Every cause of a crash, produced for real in a process of its own.

#include "Tests/Framework/CXX/System/CrashReporter/CrashRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <sstream>

namespace CrashTest {

using testing::ContainsRegex;

namespace {

struct Expectation {
    const char* cause;
    const char* place;
    const char* reason;   ///< regular expression for the whole first line behind its heading
    const char* function; ///< the function at fault
    const char* source;   ///< the file of that function
};

void PrintTo(const Expectation& expectation, std::ostream* out) {
    *out << expectation.cause << " in " << expectation.place;
}

constexpr const char* causesFile = "CrashCauses.cpp";

const Expectation expectations[] = {
    {"throwRuntimeError", "main", "Uncaught exception of type std::runtime_error: simulated crash",
     "throwRuntimeError()", causesFile},
    {"throwRuntimeError", "thread", "Uncaught exception of type std::runtime_error: simulated crash",
     "throwRuntimeError()", causesFile},
    {"throwRuntimeError", "loop", "Uncaught exception of type std::runtime_error: simulated crash",
     "throwRuntimeError()", causesFile},
    {"throwInNoexcept", "main", "Uncaught exception of type std::runtime_error: simulated crash", "throwInNoexcept()",
     causesFile},
    {"throwInNoexcept", "thread", "Uncaught exception of type std::runtime_error: simulated crash", "throwInNoexcept()",
     causesFile},
    {"throwOwnException", "main",
     "Uncaught exception of type CrashTest::OwnException: own: the lens cap is on Kam\u00e9ra \U0001F4F7",
     "throwOwnException()", causesFile},
    {"throwOwnException", "loop",
     "Uncaught exception of type CrashTest::OwnException: own: the lens cap is on Kam\u00e9ra \U0001F4F7",
     "throwOwnException()", causesFile},
    {"throwInt", "thread", "Uncaught exception of type int: 4711", "throwInt()", causesFile},
    {"throwUnknownType", "main", "Uncaught exception of type CrashTest::UnknownException", "throwUnknownType()",
     causesFile},
    {"throwNested", "main",
     "Uncaught exception of type std::_Nested_exception<std::runtime_error>: outer text; caused by "
     "std::out_of_range: inner text",
     "throwNested()", causesFile},
    {"throwSeveralLines", "main", "Uncaught exception of type std::runtime_error: first When: never third",
     "throwSeveralLines()", causesFile},
    {"throwWithCrashingText", "main",
     "Uncaught exception of type N9CrashTest12CrashingTextE; while it was being described: Segmentation fault "
     "\\(SIGSEGV\\): sent by the process itself",
     "CrashTest::CrashingText::what()", "OwnException.h"},
    {"throwWithThrowingText", "main", "Uncaught exception of type CrashTest::OwnException", "throwWithThrowingText()",
     causesFile},
    {"terminateWithoutException", "main", "std::terminate was called without an exception",
     "terminateWithoutException()", causesFile},
    {"writeToNull", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()", causesFile},
    {"writeToNull", "thread", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()",
     causesFile},
    {"writeToNull", "loop", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()", causesFile},
    {"jumpToNull", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "jumpToNull()", causesFile},
    {"readBehindEndOfFile", "thread",
     "Bus error \\(SIGBUS\\): nothing behind the mapped address 0x[0-9a-f]+: the mapped file is too short or can't be "
     "read",
     "readBehindEndOfFile()", causesFile},
    {"divideByZero", "main", "Arithmetic fault \\(SIGFPE\\): integer division by zero, at address 0x[0-9a-f]+",
     "divideByZero()", causesFile},
    {"runIllegalInstruction", "thread", "Illegal instruction \\(SIGILL\\): at address 0x[0-9a-f]+",
     "runIllegalInstruction()", causesFile},
    {"callAbort", "main", "Abort \\(SIGABRT\\): abort\\(\\) was called", "callAbort()", causesFile},
    {"callAbort", "thread", "Abort \\(SIGABRT\\): abort\\(\\) was called", "callAbort()", causesFile},
    {"manyThreads", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()", causesFile},
    {"overflowTheStack", "main", "Segmentation fault \\(SIGSEGV\\): stack overflow, at address 0x[0-9a-f]+",
     "overflowStack(int)", causesFile},
    {"overflowTheStack", "thread", "Segmentation fault \\(SIGSEGV\\): stack overflow, at address 0x[0-9a-f]+",
     "overflowStack(int)", causesFile},
    {"ignoreChildren", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()",
     causesFile},
    {"closeStandardDescriptors", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()",
     causesFile},
};

/// Not for a sanitizer, which has a heap of its own and trips over missing descriptors itself.
const Expectation plainExpectations[] = {
    {"useUpDescriptors", "main", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()",
     causesFile},
    {"freeTwice", "main", "Abort \\(SIGABRT\\): abort\\(\\) was called", "freeTwice()", causesFile},
    {"crashInsideMalloc", "main", "Segmentation fault \\(SIGSEGV\\): access to an address that can't exist",
     "breakHeapSoThatMallocCrashes()", "HeapDamage.cpp"},
    {"crashInsideMalloc", "thread", "Segmentation fault \\(SIGSEGV\\): access to an address that can't exist",
     "breakHeapSoThatMallocCrashes()", "HeapDamage.cpp"},
    {"crashWithBrokenHeap", "thread", "Segmentation fault \\(SIGSEGV\\): no memory at address 0x0", "writeToNull()",
     causesFile},
    {"breakHeapWhileUnwinding", "main",
     "Uncaught exception of type St13runtime_error: simulated crash; while it was being described: .*",
     "breakHeapWhileUnwinding()", causesFile},
};

class CrashCausesTest : public testing::TestWithParam<Expectation> {
protected:
    static void checkHead(const CrashRun& run, const Expectation& expected) {
        EXPECT_THAT(run.record, ContainsRegex("^What happened:  " + std::string(expected.reason) + "\n"));
        EXPECT_NE(run.record.find("\nApplication:    Crash Program \u00e9\nVersion:        7.3\nProcess:        " +
                                  std::to_string(run.process) + " /"),
                  std::string::npos);
    }

    /// The thread that the head names is the one whose stack holds the function at fault, with its line.
    static void checkStack(const CrashRun& run, const Expectation& expected) {
        const std::string head = section(run.record, "Thread:         ");
        int thread = 0;
        std::istringstream(head.substr(head.find(' '))) >> thread;
        const bool isOther = std::string(expected.place) == "thread";
        const std::string name = isOther ? " \"unlucky\"" : " \"CrashProgram\"";
        EXPECT_EQ(head, "Thread:         " + std::to_string(thread) + name + "\n");
        EXPECT_EQ(thread != run.process, isOther);
        const std::string stack = section(run.record, "Thread " + std::to_string(thread) + name + ", which crashed:");
        // Another thread may be at a place that can't be followed: the start of a thread in the C library.
        EXPECT_EQ(stack.find("could not be followed"), std::string::npos) << stack;
        const std::size_t place = stack.find(expected.function);
        ASSERT_NE(place, std::string::npos) << expected.function << " is not in\n" << run.record;
        const std::string line = stack.substr(place, stack.find('\n', place) - place);
        EXPECT_THAT(line, ContainsRegex(std::string(expected.source) + ":[0-9]+ \\(CrashProgram\\+0x"));
    }

    static void check(const Expectation& expected) {
        const ScratchFolder folder;
        const CrashRun run = runCrashProgram(folder, {expected.cause, expected.place});
        ASSERT_FALSE(run.record.empty()) << run.errorText;
        checkHead(run, expected);
        checkStack(run, expected);
        EXPECT_FALSE(section(run.record, "Registers of thread").empty());
        EXPECT_THAT(section(run.record, "Modules"),
                    ContainsRegex("0x[0-9a-f]{16}-0x[0-9a-f]{16} [0-9a-f]{40} /.*/CrashProgram\n"));
    }

    /// The same death as without the reporter.
    static void checkEnd(const Expectation& expected) {
        const ScratchFolder folder;
        const ScratchFolder otherFolder;
        const CrashRun with = runCrashProgram(folder, {expected.cause, expected.place});
        const CrashRun without = runCrashProgram(otherFolder, {expected.cause, expected.place, "install=no"});
        EXPECT_TRUE(without.record.empty());
        EXPECT_EQ(with.status, without.status);
        // A sanitizer's report holds addresses. And if the text of an exception can't be asked for, we die of
        // that instead of the library's own handler, which prints the type first.
        if (underSanitizer || with.record.find("while it was being described") != std::string::npos)
            return;
        EXPECT_EQ(with.errorText, without.errorText);
    }

    /// Which request finds the damage, and whether the C library notices it or faults, depends on what stood in the
    /// heap before: another program, and that is one with the reporter in it, may end by the other signal.
    static void checkEndOfBrokenHeap(const Expectation& expected) {
        const ScratchFolder folder;
        const CrashRun run = runCrashProgram(folder, {expected.cause, expected.place});
        ASSERT_TRUE(WIFSIGNALED(run.status)) << run.status;
        EXPECT_THAT(WTERMSIG(run.status), testing::AnyOf(SIGABRT, SIGSEGV));
    }
};

std::string nameOf(const testing::TestParamInfo<Expectation>& info) {
    return std::string(info.param.cause) + "In" + info.param.place;
}

using CrashCausesOfPlainBuildsTest = CrashCausesTest;

} // namespace

TEST_P(CrashCausesTest, RecordTellsCauseThreadAndFunction) { check(GetParam()); }

TEST_P(CrashCausesTest, ProcessEndsAsItWouldHave) { checkEnd(GetParam()); }

TEST_P(CrashCausesOfPlainBuildsTest, RecordTellsCauseThreadAndFunction) {
    if (underSanitizer)
        GTEST_SKIP() << "A sanitizer has a heap of its own and needs descriptors itself";
    check(GetParam());
}

TEST_P(CrashCausesOfPlainBuildsTest, ProcessEndsAsItWouldHave) {
    if (underSanitizer)
        GTEST_SKIP() << "A sanitizer has a heap of its own and needs descriptors itself";
    if (std::string(GetParam().cause) == "breakHeapWhileUnwinding")
        checkEndOfBrokenHeap(GetParam());
    else
        checkEnd(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, CrashCausesTest, testing::ValuesIn(expectations), nameOf);
INSTANTIATE_TEST_SUITE_P(All, CrashCausesOfPlainBuildsTest, testing::ValuesIn(plainExpectations), nameOf);

} // namespace CrashTest
