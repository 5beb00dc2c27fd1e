#pragma once

/// For use in a process that is to end: from now on this system call (SYS_...) fails with that errno, on all threads.
/// False if the system does not allow that.
bool letSystemCallFail(unsigned number, unsigned error);

/// Likewise: no thread can be made from now on, as where the system has none left.
bool letThreadStartsFail();
