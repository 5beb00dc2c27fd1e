#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace CrashTest {

/// A new empty folder, removed in the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return _path; }

    /// Files whose names end so, sorted.
    std::vector<std::filesystem::path> files(const std::string& extension) const;

private:
    std::filesystem::path _path;
};

/// What became of one run of CrashProgram.
struct CrashRun {
    int status;             ///< as waitpid gives it
    int process;            ///< its id
    std::string errorText;  ///< its standard error
    std::string record;     ///< the text of its record; empty: none
    std::string recordName; ///< the file's name
    std::chrono::milliseconds duration;
};

/// Runs CrashProgram with these arguments and the given folder for reports; kills it after a minute. More
/// than one record is a failure of the test. With `interrupt`, sends it that signal as soon as it is ready.
CrashRun runCrashProgram(const ScratchFolder& folder, std::vector<std::string> arguments, int interrupt = 0);

/// Where the programs of this build are.
std::string programFolder();

std::string readFile(const std::filesystem::path& path);

/// The lines from the one that begins with `heading` to the next empty line.
std::string section(const std::string& record, const std::string& heading);

#if defined(__SANITIZE_THREAD__)
inline constexpr bool underThreadSanitizer = true;
#else
inline constexpr bool underThreadSanitizer = false;
#endif
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool underSanitizer = true;
#else
inline constexpr bool underSanitizer = underThreadSanitizer;
#endif

} // namespace CrashTest
