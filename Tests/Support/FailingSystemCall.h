#pragma once

/// For use in a process that is to end: from now on this system call (SYS_...) fails with that errno. False if the
/// system does not allow that.
bool letSystemCallFail(unsigned number, unsigned error);
