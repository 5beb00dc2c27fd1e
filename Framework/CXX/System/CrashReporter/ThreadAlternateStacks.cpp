// Gives every thread of the program an alternate signal stack from its first to its last instruction.
//
// An alternate stack belongs to one thread, and only that thread can set it up. Threads come from many
// places here (the platforms, Qt, the logging library), which neither know crash recording nor should.
// What they have in common is pthread_create. The program therefore defines this function itself: by the
// rules of dynamic linking its definition comes before the C library's, for shared libraries too. It
// hands on to the next definition (the C library's, or a sanitizer's), with a start routine around the
// caller's own. A thread that is made while the reporter is not installed gets its stack all the same,
// since the reporter may be installed during its life.

#include "Framework/CXX/System/CrashReporter/ThreadAlternateStacks.h"

#include "Framework/CXX/System/CrashReporter/AlternateStack.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <memory>
#include <new>

namespace Halden::System {

namespace {

struct ThreadStart {
    void* (*routine)(void*);
    void* argument;
};

using CreateThread = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

std::unique_ptr<AlternateStack>& stackOfThisThread() {
    thread_local std::unique_ptr<AlternateStack> stack;
    return stack;
}

/// Not noexcept: an exception that nobody catches must find no handler here, so that the stack still
/// stands when std::terminate is called.
void* runWithAlternateStack(void* start) {
    const AlternateStack stack;
    const ThreadStart own = *std::unique_ptr<ThreadStart>(static_cast<ThreadStart*>(start));
    return own.routine(own.argument);
}

CreateThread nextCreateThread() {
    static const auto next = reinterpret_cast<CreateThread>(dlsym(RTLD_NEXT, "pthread_create"));
    return next;
}

} // namespace

void keepAlternateStack() {
    if (!stackOfThisThread())
        stackOfThisThread() = std::make_unique<AlternateStack>();
}

void dropAlternateStack() noexcept { stackOfThisThread().reset(); }

} // namespace Halden::System

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument) noexcept {
    using namespace Halden::System;
    std::unique_ptr<ThreadStart> start(new (std::nothrow) ThreadStart{routine, argument});
    const CreateThread next = nextCreateThread();
    if (!start || next == nullptr)
        return EAGAIN;
    const int result = next(thread, attributes, runWithAlternateStack, start.get());
    if (result == 0)
        static_cast<void>(start.release()); // the new thread's now
    return result;
}
