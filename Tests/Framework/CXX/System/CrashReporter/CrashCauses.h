#pragma once

#include <map>
#include <string>

namespace CrashTest {

using Cause = void (*)();

/// Every way to die that is tried, by name. Each ends in a function of its own that is never inlined, so
/// that the record can be asked for it.
const std::map<std::string, Cause>& causes();

/// Runs the cause in a further thread, named "unlucky", and waits for it.
void runInThread(Cause cause);

/// Runs the cause from the event loop of Qt.
void runInEventLoop(Cause cause);

} // namespace CrashTest
