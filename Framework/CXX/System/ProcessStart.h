#pragma once

namespace Halden::System {

/// Opens those of the descriptors 0 to 2 that are closed on /dev/null: the next file that is opened would take the
/// place of standard output, and get what is written there. To be called before any file is opened.
void openMissingStreams();

/// Lets a write that finds no reader, or a file at the limit of its size, fail like any other instead of ending the
/// process. Programs that this one starts inherit that.
void surviveFailedWrites();

/// Lets the memory that one still takes serve the next: a picture is many thousands of pages, and getting each anew
/// from the system takes longer than what is done with them. To be called before the first thread is started.
void keepFreedMemory();

} // namespace Halden::System
