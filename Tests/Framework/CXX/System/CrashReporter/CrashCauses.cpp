#include "Tests/Framework/CXX/System/CrashReporter/CrashCauses.h"

#include "Tests/Framework/CXX/System/CrashReporter/HeapDamage.h"
#include "Tests/Framework/CXX/System/CrashReporter/OwnException.h"
#include "Tests/Support/FailingSystemCall.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <latch>
#include <stdexcept>
#include <thread>

// clang makes no clones, and has a name of its own for the other attribute.
#ifdef __clang__
#define NEVER_INLINED [[gnu::noinline, clang::no_sanitize("address", "undefined", "thread")]]
#else
#define NEVER_INLINED [[gnu::noinline, gnu::noclone, gnu::no_sanitize("address", "undefined", "thread")]]
#endif

namespace CrashTest {

namespace {

// The compiler must not know what these hold.
volatile int zero = 0;
volatile int endlessDepth = -1;
int* volatile nowhere = nullptr;

NEVER_INLINED void throwRuntimeError() { throw std::runtime_error("simulated crash"); }

NEVER_INLINED void throwOwnException() { throw OwnException{"the lens cap is on Kam\u00e9ra \U0001F4F7"}; }

NEVER_INLINED void throwInt() { throw 4711; }

NEVER_INLINED void throwUnknownType() { throw UnknownException{}; }

NEVER_INLINED void throwNested() {
    try {
        throw std::out_of_range("inner text");
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error("outer text"));
    }
}

NEVER_INLINED void throwSeveralLines() { throw std::runtime_error("first\nWhen: never\nthird"); }

NEVER_INLINED void throwInNoexcept() noexcept { throwRuntimeError(); }

NEVER_INLINED void throwPastHeapBreaker() {
    const HeapBreaker breaker;
    throwRuntimeError();
}

/// A heap that breaks while the stack is unwound towards a noexcept function.
NEVER_INLINED void breakHeapWhileUnwinding() noexcept {
    throwPastHeapBreaker();
    zero = 1; // not a tail call
}

NEVER_INLINED void throwWithCrashingText() { throw CrashingText(); }

NEVER_INLINED void throwWithHangingText() { throw HangingText(); }

NEVER_INLINED void throwWithThrowingText() { throw OwnException{"throw while describing"}; }

NEVER_INLINED void terminateWithoutException() { std::terminate(); }

NEVER_INLINED void writeToNull() { *nowhere = 1; }

NEVER_INLINED void jumpToNull() {
    auto* function = reinterpret_cast<void (*)()>(nowhere);
    function();
    zero = 1; // not a tail call
}

NEVER_INLINED void readBehindEndOfFile() {
    const int file = open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    void* memory = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0);
    zero = *static_cast<volatile int*>(memory);
}

NEVER_INLINED void divideByZero() { zero = 100 / zero; }

NEVER_INLINED void runIllegalInstruction() {
    asm volatile("ud2");
    zero = 1;
}

NEVER_INLINED void callAbort() { std::abort(); }

NEVER_INLINED void freeTwice() {
    void* volatile memory = std::malloc(100'000);
    std::free(memory);
    std::free(memory);
    zero = 1; // not a tail call
}

NEVER_INLINED int overflowStack(int depth) { // NOLINT(misc-no-recursion)
    volatile char frame[200];
    frame[0] = static_cast<char>(depth);
    return depth == endlessDepth ? 0 : overflowStack(depth + 1) + frame[0];
}

NEVER_INLINED void overflowTheStack() { zero = overflowStack(0); }

NEVER_INLINED void crashInsideMalloc() { breakHeapSoThatMallocCrashes(); }

NEVER_INLINED void crashWithBrokenHeap() {
    const HeapBreaker breaker;
    breaker.breakNow();
    writeToNull();
}

NEVER_INLINED void manyThreads() {
    constexpr int count = 50;
    constexpr int busy = 4; // more would take the processors away from everything else on the machine
    static std::latch started(count);
    static std::atomic<unsigned> turns = 0; // a loop without any effect need not be one
    for (int i = 0; i < count; ++i) {
        std::thread([i] {
            pthread_setname_np(pthread_self(), i < busy ? "busy" : "sleepy");
            started.count_down();
            while (i < busy) // NOLINT(bugprone-infinite-loop): until the process ends
                turns.fetch_add(1, std::memory_order_relaxed);
            pause();
        }).detach();
    }
    started.wait();
    writeToNull();
}

/// Two threads crash at the same moment.
NEVER_INLINED void crashTwice() {
    std::thread other(writeToNull);
    throwRuntimeError();
    other.join();
}

NEVER_INLINED void crashWhenFolderIsGone() {
    std::filesystem::remove(std::getenv("CRASH_TEST_FOLDER"));
    writeToNull();
}

/// A child made by fork() is on its own.
NEVER_INLINED void crashInForkedChild() {
    if (fork() == 0)
        writeToNull();
}

NEVER_INLINED void useUpDescriptors() {
    while (open("/dev/null", O_RDONLY) >= 0) {
    }
    writeToNull();
}

NEVER_INLINED void closeStandardDescriptors() {
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        close(descriptor);
    writeToNull();
}

/// As at the limit of processes, which the superuser does not have.
NEVER_INLINED void crashWithoutRoomForProcesses() {
    if (letSystemCallFail(SYS_clone, EAGAIN))
        writeToNull();
}

NEVER_INLINED void ignoreChildren() {
    std::signal(SIGCHLD, SIG_IGN);
    writeToNull();
}

} // namespace

const std::map<std::string, Cause>& causes() {
    static const std::map<std::string, Cause> all = {
        {"throwRuntimeError", throwRuntimeError},
        {"throwOwnException", throwOwnException},
        {"throwInt", throwInt},
        {"throwUnknownType", throwUnknownType},
        {"throwNested", throwNested},
        {"throwSeveralLines", throwSeveralLines},
        {"throwInNoexcept", throwInNoexcept},
        {"breakHeapWhileUnwinding", breakHeapWhileUnwinding},
        {"throwWithCrashingText", throwWithCrashingText},
        {"throwWithHangingText", throwWithHangingText},
        {"throwWithThrowingText", throwWithThrowingText},
        {"terminateWithoutException", terminateWithoutException},
        {"writeToNull", writeToNull},
        {"jumpToNull", jumpToNull},
        {"readBehindEndOfFile", readBehindEndOfFile},
        {"divideByZero", divideByZero},
        {"runIllegalInstruction", runIllegalInstruction},
        {"callAbort", callAbort},
        {"freeTwice", freeTwice},
        {"overflowTheStack", overflowTheStack},
        {"crashInsideMalloc", crashInsideMalloc},
        {"crashWithBrokenHeap", crashWithBrokenHeap},
        {"manyThreads", manyThreads},
        {"crashTwice", crashTwice},
        {"crashWhenFolderIsGone", crashWhenFolderIsGone},
        {"crashInForkedChild", crashInForkedChild},
        {"useUpDescriptors", useUpDescriptors},
        {"closeStandardDescriptors", closeStandardDescriptors},
        {"crashWithoutRoomForProcesses", crashWithoutRoomForProcesses},
        {"ignoreChildren", ignoreChildren},
        {"wait", [] { pause(); }},
        {"nothing", [] {}},
    };
    return all;
}

void runInThread(Cause cause) {
    std::latch joining(1); // nobody can tell the stack of a thread that is just making another
    std::thread unlucky([cause, &joining] {
        pthread_setname_np(pthread_self(), "unlucky");
        joining.wait();
        cause();
    });
    joining.count_down();
    unlucky.join();
}

void runInEventLoop(Cause cause) {
    int argc = 1;
    char name[] = "CrashProgram";
    char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    QTimer::singleShot(0, [cause] {
        cause();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
}

} // namespace CrashTest
