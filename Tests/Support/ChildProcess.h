#pragma once

#include <filesystem>
#include <functional>

/// Runs the work in a process of its own. Its expectations are checked there: 0 if all held, 1 if not, a negative
/// number -N if signal N ended it. Not for a moment at which other threads run.
int runInChild(const std::function<void()>& work);

/// For use in a child: lets the process that made it trace it, as a debugger does.
bool letParentTrace();

/// As runInChild, in namespaces in which the work may mount and change its root, also without being the superuser, and
/// expects that all held. Skips the test where the system does not allow that.
void runInPrivateMounts(const std::function<void()>& work);

/// For use in private mounts: an empty file system in memory there, of that many bytes.
bool mountMemory(const std::filesystem::path& folder, std::size_t bytes);

/// For use in a child: what it writes to standard output goes to that file from now on.
void sendStandardOutputTo(const std::filesystem::path& file);
